#pragma once

#include "common/Windows.h"

#include <string>

// Takes a key of the registry away, with all below it, for the lifetime of the object, and puts back what was there before,
// whatever the test left. What an interrupted test did not put back is found again by the next one.
class RegistryAside {
 public:
  RegistryAside(HKEY root, const std::string& name);
  ~RegistryAside();
  RegistryAside(const RegistryAside&) = delete;
  RegistryAside& operator=(const RegistryAside&) = delete;

 private:
  const HKEY root;
  const std::string name;
  const std::string kept;  // below HKEY_CURRENT_USER; its key `was` is there when the key was
};

// What links in browsers start: for the machine, and by the user's own entries and choice.
struct LinkEntriesAside {
  const RegistryAside machine = {HKEY_LOCAL_MACHINE, "Software\\Classes\\norvik"};
  const RegistryAside user = {HKEY_CURRENT_USER, "Software\\Classes\\norvik"};
  const RegistryAside choice = {
      HKEY_CURRENT_USER, "Software\\Microsoft\\Windows\\Shell\\Associations\\UrlAssociations\\norvik"};
};

// Writes a text into the registry (value null: the key's default one); the key is made if need be.
void WriteRegistryText(HKEY root, const std::string& key, const char* value, const std::string& text);

// A text of the registry, or the texts of a list with a bar behind each; "none" when there is none.
std::string RegistryTextOf(HKEY root, const std::string& key, const char* value);
