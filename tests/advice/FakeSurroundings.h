#pragma once

#include <map>

#include "advice/Surroundings.h"

// A machine whose folders lie where this says, in which nobody else may write and nothing has a neighbour, until a test puts
// it otherwise. Paths are compared as they are written.
class FakeSurroundings : public Surroundings {
 public:
  std::string WriterOf(const std::wstring& path) const override { return Find(writers, path); }
  std::string NeighbourOf(const std::wstring& folder) const override { return Find(neighbours, folder); }

  std::vector<NamedFolder> GuardedFolders() const override {
    return {{L"C:\\Windows", "the Windows folder"}, {L"C:\\Users\\anna", "a user's whole profile"}};
  }
  std::vector<NamedFolder> StartupFolders() const override {
    return {{L"C:\\Users\\anna\\Menu\\Startup", "the user's startup folder"}};
  }
  std::wstring ProfilesFolder() const override { return L"C:\\Users"; }
  bool IsProgram(const std::string& extension) const override { return extension == "exe"; }

  std::map<std::wstring, std::string> writers;
  std::map<std::wstring, std::string> neighbours;

 private:
  static std::string Find(const std::map<std::wstring, std::string>& names, const std::wstring& path) {
    const auto found = names.find(path);
    return found == names.end() ? std::string() : found->second;
  }
};
