#include "advice/ModuleFile.h"

#include <gtest/gtest.h>
#include <wincrypt.h>
#include <winver.h>

#include <cwchar>

#include "advice/DoctorExpectations.h"
#include "advice/Words.h"
#include "common/Handles.h"
#include "host/InstalledModule.h"
#include "support/ImportPatch.h"

namespace {

constexpr int kBits = static_cast<int>(sizeof(void*)) * 8;

constexpr char kAdvice[] = " Put norvik.dll beside norvik.exe.";

std::wstring WidePath(const std::string& path) {
  return WideFromAnsi(path.c_str());
}

ModuleFile Program(const std::string& version = "", int bits = kBits) {
  ModuleFile program;
  program.bits = bits;
  program.version = version;
  return program;
}

// What is said of the built module in front of its hash.
std::string Described(const InstalledModule& installed) {
  return "'" + installed.Path() + "', version 1.0.0.0, " + std::to_string(kBits) + " bit";
}

TEST(ModuleFileTest, TheBuiltModuleTellsWhatItIs) {
  const InstalledModule installed;
  const ModuleFile module = ReadModuleFile(WidePath(installed.Path()));
  EXPECT_EQ("", module.problem);
  EXPECT_EQ(kBits, module.bits);
  EXPECT_EQ("Norvik", module.product);
  EXPECT_EQ("1.0.0.0", module.version);
  EXPECT_EQ(64u, module.hash.size());
  const std::string detail = Described(installed) + ", SHA-256 " + module.hash + ".";
  ExpectCheck("module", DoctorStatus::Ok, detail, CheckModule(module, Program()));
  ExpectCheck("module", DoctorStatus::Ok, detail, CheckModule(module, Program("1.0.0.0")));
}

TEST(ModuleFileTest, TheHashIsThatOfTheBytes) {
  const TemporaryFolder folder;
  WriteWholeFile(folder.File("abc"), "abc");
  EXPECT_EQ(
      "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad", ReadModuleFile(WidePath(folder.File("abc"))).hash);
  WriteWholeFile(folder.File("empty"), "");
  EXPECT_EQ("e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855",
            ReadModuleFile(WidePath(folder.File("empty"))).hash);
}

TEST(ModuleFileTest, WhatTheHashTakesIsGivenBack) {
  int taken = 0;
  PATCH_IMPORT(takes, CryptAcquireContextW, [&](auto original, auto... arguments) -> BOOL {
    ++taken;
    return original(arguments...);
  });
  PATCH_IMPORT(givesBack, CryptReleaseContext, [&](auto original, HCRYPTPROV provider, DWORD flags) -> BOOL {
    --taken;
    EXPECT_EQ(0u, flags) << "the system refuses others";
    return original(provider, flags);
  });
  const TemporaryFolder folder;
  WriteWholeFile(folder.File("abc"), "abc");
  EXPECT_NE("", ReadModuleFile(WidePath(folder.File("abc"))).hash);
  EXPECT_EQ(0, taken);
}

// What was not handed out is neither used nor given back.
TEST(ModuleFileTest, WithoutAHashNothingIsHashed) {
  PATCH_IMPORT(hashes, CryptHashData, [](auto, auto...) -> BOOL {
    ADD_FAILURE() << "there is nothing to hash with";
    return FALSE;
  });
  PATCH_IMPORT(destructions, CryptDestroyHash, [](auto, auto...) -> BOOL {
    ADD_FAILURE() << "there is no hash to give back";
    return FALSE;
  });
  const TemporaryFolder folder;
  WriteWholeFile(folder.File("abc"), "abc");
  {
    PATCH_IMPORT(none, CryptCreateHash, FailWith(FALSE, static_cast<DWORD>(NTE_BAD_ALGID)));
    EXPECT_EQ("", ReadModuleFile(WidePath(folder.File("abc"))).hash);
  }
  PATCH_IMPORT(none, CryptAcquireContextW, FailWith(FALSE, static_cast<DWORD>(NTE_BAD_KEYSET)));
  PATCH_IMPORT(releases, CryptReleaseContext, [](auto, auto...) -> BOOL {
    ADD_FAILURE() << "there is no provider to give back";
    return FALSE;
  });
  PATCH_IMPORT(creations, CryptCreateHash, [](auto, auto...) -> BOOL {
    ADD_FAILURE() << "there is no provider to ask";
    return FALSE;
  });
  EXPECT_EQ("", ReadModuleFile(WidePath(folder.File("abc"))).hash);
}

// What a name without a length points to is nobody's.
TEST(ModuleFileTest, AProductWithoutANameIsNone) {
  PATCH_IMPORT(names, VerQueryValueW, [](auto original, LPCVOID block, LPCWSTR name, LPVOID* found, PUINT length) -> BOOL {
    const BOOL isFound = original(block, name, found, length);
    if (std::wcslen(name) > 1)
      *length = 0;
    return isFound;
  });
  const InstalledModule installed;
  const ModuleFile module = ReadModuleFile(WidePath(installed.Path()));
  EXPECT_EQ("1.0.0.0", module.version);
  EXPECT_EQ("", module.product);
}

TEST(ModuleFileTest, WithoutAHashTheRestIsTold) {
  const InstalledModule installed;
  {
    PATCH_IMPORT(none, CryptAcquireContextW, FailWith(FALSE, static_cast<DWORD>(NTE_BAD_KEYSET)));
    ExpectCheck("module", DoctorStatus::Ok, Described(installed) + ".",
                CheckModule(ReadModuleFile(WidePath(installed.Path())), Program()));
  }
  PATCH_IMPORT(none, CryptGetHashParam, FailWith(FALSE, static_cast<DWORD>(NTE_BAD_HASH)));
  EXPECT_EQ("", ReadModuleFile(WidePath(installed.Path())).hash);
}

TEST(ModuleFileTest, AMissingModuleFails) {
  const TemporaryFolder folder;
  const ModuleFile module = ReadModuleFile(WidePath(folder.File("norvik.dll")));
  EXPECT_NE("", module.problem);
  EXPECT_EQ(0, module.bits);
  ExpectCheck("module", DoctorStatus::Failed, module.problem + kAdvice, CheckModule(module, Program()));
}

// Heads of programs that end too early, or lead elsewhere.
TEST(ModuleFileTest, WhatIsNoProgramIsNotTheModule) {
  const TemporaryFolder folder;
  const InstalledModule installed;
  const std::string whole = ReadWholeFile(installed.Path());
  std::string elsewhere = whole.substr(0, 1024), before = elsewhere, otherMachine = elsewhere, otherStart = elsewhere;
  otherStart.replace(0, 2, "ZM");
  elsewhere.replace(0x3C, 4, std::string("\xFF\xFF\xFF\x7F", 4));
  before.replace(0x3C, 4, std::string("\xFF\xFF\xFF\xFF", 4));
  otherMachine.replace(static_cast<unsigned char>(whole[0x3C]) + std::size_t{4}, 2, std::string("\x64\xAA", 2));
  for (const std::string& bytes : {std::string(), std::string("MZ"), std::string("no program"), whole.substr(0, 0x40),
                                   whole.substr(0, static_cast<unsigned char>(whole[0x3C]) + std::size_t{6}), elsewhere,
                                   before, otherMachine, otherStart}) {
    WriteWholeFile(folder.File("norvik.dll"), bytes);
    const ModuleFile module = ReadModuleFile(WidePath(folder.File("norvik.dll")));
    EXPECT_EQ(0, module.bits) << bytes.size();
    ExpectCheck("module", DoctorStatus::Failed, "'" + folder.File("norvik.dll") + "' is not the module." + kAdvice,
                CheckModule(module, Program()));
  }
}

TEST(ModuleFileTest, AnotherProgramIsNotTheModule) {
  const ModuleFile program = ReadModuleFile(ThisProgram().path);
  EXPECT_EQ(kBits, program.bits);
  ExpectCheck("module", DoctorStatus::Failed, "'" + Utf8(program.path) + "' is not the module." + kAdvice,
              CheckModule(program, Program()));
}

TEST(ModuleFileTest, AnotherWidthOrVersionThanTheProgramsIsAWarning) {
  const InstalledModule installed;
  const ModuleFile module = ReadModuleFile(WidePath(installed.Path()));
  const std::string described = Described(installed) + ", SHA-256 " + module.hash;
  ExpectCheck("module", DoctorStatus::Warning,
              described + ". This program has " + std::to_string(96 - kBits) +
                  " bit; the norvik.exe of the module's width sees the machine as the module's hosts do.",
              CheckModule(module, Program("1.0.0.0", 96 - kBits)));
  ExpectCheck("module", DoctorStatus::Warning,
              described + ". This program is version 1.0.1.0 and may decide otherwise than the module.",
              CheckModule(module, Program("1.0.1.0")));
}

TEST(ModuleFileTest, ThisProgramHasAPathAndAWidth) {
  EXPECT_EQ(kBits, ThisProgram().bits);
  EXPECT_NE(std::wstring::npos, ThisProgram().path.find(L"advice_tests.exe"));
}

TEST(ModuleFileTest, AProgramWhosePathIsCutHasNone) {
  DWORD told = MAX_PATH - 1;
  PATCH_IMPORT(names, GetModuleFileNameW, [&told](auto, HMODULE, LPWSTR path, DWORD size) -> DWORD {
    std::wmemset(path, L'x', size);
    return told;
  });
  EXPECT_EQ(std::wstring(MAX_PATH - 1, L'x'), ThisProgram().path);
  told = MAX_PATH;
  EXPECT_EQ(L"", ThisProgram().path);
}

TEST(ModuleFileTest, OneFileIsTheSameByAnyName) {
  const TemporaryFolder folder;
  const std::wstring file = WidePath(folder.File("a.dll")), copy = WidePath(folder.File("b.dll"));
  WriteWholeFile(folder.File("a.dll"), "same");
  WriteWholeFile(folder.File("b.dll"), "same");
  EXPECT_TRUE(IsSameFile(file, file));
  EXPECT_TRUE(IsSameFile(file, WidePath(folder.Path() + "\\.\\A.DLL")));
  EXPECT_FALSE(IsSameFile(file, copy));
  EXPECT_FALSE(IsSameFile(file, WidePath(folder.File("none"))));
  EXPECT_FALSE(IsSameFile(L"", L""));
}

TEST(ModuleFileTest, AnOpenHandleDoesNotHinderTheComparison) {
  const TemporaryFolder folder;
  WriteWholeFile(folder.File("a.dll"), "x");
  const FileHandle open(
      CreateFileA(folder.File("a.dll").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  ASSERT_TRUE(open);
  EXPECT_TRUE(IsSameFile(WidePath(folder.File("a.dll")), WidePath(folder.File("A.dll"))));
}

}  // namespace
