#include "advice/ModuleFile.h"

#include <winver.h>

#include <cstring>
#include <vector>

#include "advice/Digest.h"
#include "advice/Document.h"
#include "advice/Words.h"
#include "common/Handles.h"

namespace {

constexpr char kCheckName[] = "module";
constexpr char kProduct[] = "Norvik";
constexpr int kProgramBits = static_cast<int>(sizeof(void*)) * 8;

template <class Record>
bool ReadRecord(const std::string& bytes, std::size_t offset, Record& record) {
  if (offset > bytes.size() || bytes.size() - offset < sizeof(record))
    return false;
  std::memcpy(&record, bytes.data() + offset, sizeof(record));
  return true;
}

int BitsOf(const std::string& bytes) {
  IMAGE_DOS_HEADER start = {};
  DWORD signature = 0;
  IMAGE_FILE_HEADER header = {};
  if (!ReadRecord(bytes, 0, start) || start.e_magic != IMAGE_DOS_SIGNATURE || start.e_lfanew < 0)
    return 0;
  const auto offset = static_cast<std::size_t>(start.e_lfanew);
  if (!ReadRecord(bytes, offset, signature) || signature != IMAGE_NT_SIGNATURE ||
      !ReadRecord(bytes, offset + sizeof(signature), header))
    return 0;
  if (header.Machine == IMAGE_FILE_MACHINE_AMD64)
    return 64;
  return header.Machine == IMAGE_FILE_MACHINE_I386 ? 32 : 0;
}

std::string VersionText(const VS_FIXEDFILEINFO& fixed) {
  return std::to_string(HIWORD(fixed.dwFileVersionMS)) + "." + std::to_string(LOWORD(fixed.dwFileVersionMS)) + "." +
         std::to_string(HIWORD(fixed.dwFileVersionLS)) + "." + std::to_string(LOWORD(fixed.dwFileVersionLS));
}

void ReadVersion(ModuleFile& file) {
  DWORD ignored = 0;
  const DWORD size = GetFileVersionInfoSizeW(file.path.c_str(), &ignored);
  std::vector<BYTE> block(size);
  if (size == 0 || !GetFileVersionInfoW(file.path.c_str(), 0, size, block.data()))
    return;
  void* found = nullptr;
  UINT length = 0;
  if (VerQueryValueW(block.data(), L"\\", &found, &length) && length >= sizeof(VS_FIXEDFILEINFO))
    file.version = VersionText(*static_cast<const VS_FIXEDFILEINFO*>(found));
  if (VerQueryValueW(block.data(), L"\\StringFileInfo\\040904B0\\ProductName", &found, &length) && length > 0)
    file.product = Utf8(static_cast<const wchar_t*>(found));
}

FileHandle OpenToCompare(const std::wstring& path) {
  return FileHandle(CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

std::string Described(const ModuleFile& module) {
  std::string text = "'" + Utf8(module.path) + "', version " + module.version + ", " + std::to_string(module.bits) + " bit";
  return module.hash.empty() ? text : text + ", SHA-256 " + module.hash;
}

}  // namespace

ModuleFile ReadModuleFile(const std::wstring& path) {
  ModuleFile file;
  file.path = FullPath(path);
  try {
    const std::string bytes = ReadDocument(file.path);
    file.bits = BitsOf(bytes);
    file.hash = SHA256(bytes);
    ReadVersion(file);
  } catch (const Unanswered& reason) {
    file.problem = reason.what();
  }
  return file;
}

ModuleFile ThisProgram() {
  ModuleFile file;
  wchar_t path[MAX_PATH] = L"";
  const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH);
  file.path.assign(path, length < MAX_PATH ? length : 0);
  file.bits = kProgramBits;
  ReadVersion(file);
  return file;
}

bool IsSameFile(const std::wstring& path, const std::wstring& otherPath) {
  const FileHandle one = OpenToCompare(path);
  const FileHandle other = OpenToCompare(otherPath);  // both are open while they are compared: numbers are used again
  BY_HANDLE_FILE_INFORMATION first = {};
  BY_HANDLE_FILE_INFORMATION second = {};
  return GetFileInformationByHandle(one.Get(), &first) && GetFileInformationByHandle(other.Get(), &second) &&
         first.dwVolumeSerialNumber == second.dwVolumeSerialNumber && first.nFileIndexHigh == second.nFileIndexHigh &&
         first.nFileIndexLow == second.nFileIndexLow;
}

DoctorCheck CheckModule(const ModuleFile& module, const ModuleFile& program) {
  const std::string path = "'" + Utf8(module.path) + "'";
  if (!module.problem.empty())
    return {kCheckName, DoctorStatus::Failed, module.problem + " Put norvik.dll beside norvik.exe."};
  if (module.bits == 0 || module.product != kProduct)
    return {kCheckName, DoctorStatus::Failed, path + " is not the module. Put norvik.dll beside norvik.exe."};
  if (module.bits != program.bits) {
    return {kCheckName, DoctorStatus::Warning,
            Described(module) + ". This program has " + std::to_string(program.bits) +
                " bit; the norvik.exe of the module's width sees the machine as the module's hosts do."};
  }
  if (!program.version.empty() && program.version != module.version) {
    return {
        kCheckName, DoctorStatus::Warning,
        Described(module) + ". This program is version " + program.version + " and may decide otherwise than the module."};
  }
  return {kCheckName, DoctorStatus::Ok, Described(module) + "."};
}
