#pragma once

#include "common/Windows.h"

#include <string>
#include <vector>

// An identifier in braces, as the registry has it.
std::string Braced(const GUID& identifier);

// All that stands below a key of HKEY_CLASSES_ROOT, the key included, in the order of the registry: a line "key" for each
// key, "key = text" for one with a default value, and "key [name] = text" for each other value. Nothing when there is no
// such key.
std::vector<std::string> DumpClassKey(const std::string& key);

// The keys that belong to the module.
std::string ClassKey();      // CLSID\{...}
std::string LibraryKey();    // TypeLib\{...}
std::string InterfaceKey();  // Interface\{...}
constexpr char kProgramKey[] = "Norvik.AXNorvik.1";
constexpr char kCurrentProgramKey[] = "Norvik.AXNorvik";

// The dumps of the class's keys, one behind the other: CLSID\{...}, Norvik.AXNorvik, Norvik.AXNorvik.1.
std::vector<std::string> DumpClassKeys();

// Whether tests may change the module's entries. With NORVIK_KEEP_REGISTRY in the environment they may not: asking fails the
// test.
bool MayChangeEntries();

// Takes the module's entries out of the registry for the lifetime of the object, and puts back what was there before,
// whatever the test left. What an interrupted test did not put back is found again by the next one.
class ModuleEntriesAside {
 public:
  ModuleEntriesAside();
  ~ModuleEntriesAside();
  ModuleEntriesAside(const ModuleEntriesAside&) = delete;
  ModuleEntriesAside& operator=(const ModuleEntriesAside&) = delete;

 private:
  const bool mayChange = MayChangeEntries();
};
