#pragma once

#include "common/Windows.h"

#include <gtest/gtest.h>

#include <cctype>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/PermitFile.h"

// The questions and answers of permissions.json and existing-files.json (README.md), as the suites ask them.

// An element of the permission file or of a manifest, with its text.
using FolderElement = std::pair<std::string, std::string>;

struct PermissionQuestion {
  std::string name;
  std::string kind;  // "manifest", "source", "extension" or "folder"
  std::string asked;
  FolderElement folder;  // what is asked of kind "folder"
  std::optional<std::string> fileName;
  std::optional<std::string> understood;
  bool isPermitted = false;
  std::optional<FolderElement> by;  // the element and its text
  std::optional<std::string> nearest;
  std::optional<std::string> reason;
  bool isUnresolved = false;
  bool isForRun = true;
};

struct PermissionGroup {
  std::string name;
  std::optional<std::vector<std::string>> urls;
  std::optional<std::vector<std::string>> extensions;
  std::optional<std::vector<FolderElement>> folders;
  std::vector<PermissionQuestion> questions;
};

struct FileQuestion {
  std::string name;
  std::string file;
  std::string policy;
  bool force = false;
  std::vector<std::string> attributes;
  std::string fileTime;
  std::optional<std::string> commandTime;
  std::optional<std::string> sourceTime;
  std::vector<std::string> taken;
  std::string action;
  HRESULT result = S_OK;
  std::optional<std::string> movedTo;
  HRESULT run = S_OK;  // the code of the command, when nothing else fails

  bool IsFolder() const;
  DWORD Attributes() const;
};

const std::vector<PermissionGroup>& PermissionGroups();
const std::vector<FileQuestion>& FileQuestions();

// A name for a vector's test: its own, with what such a name may hold.
template <class Vector>
std::string TestNameOf(const testing::TestParamInfo<Vector>& info) {
  std::string name = std::to_string(info.index + 1) + "_";
  for (const char character : info.param.name)
    name += std::isalnum(static_cast<unsigned char>(character)) ? character : '_';
  return name;
}

inline void PrintTo(const PermissionGroup& group, std::ostream* stream) {
  *stream << group.name;
}

inline void PrintTo(const FileQuestion& question, std::ostream* stream) {
  *stream << question.name;
}

// The folders that stand for the placeholders of the vectors.
class Places {
 public:
  // With the folders of the system.
  Places();

  void Set(const std::string& name, const std::string& path) { paths[name] = path; }
  std::string Fill(std::string text) const;

  // One name for each of the names that a text such as "a.[000-999]" stands for.
  std::vector<std::string> FillAll(const std::string& text) const;

 private:
  std::map<std::string, std::string> paths;
};

// What a group's permission file has beside the group's own entries.
enum class Beside {
  WhatItNeeds,      // an entry of each kind that the group does not name
  AndWhatRunsNeed,  // and one that permits the manifests of the test
};

// The entries of a group's permission file, and where they stand.
class GroupEntries {
 public:
  GroupEntries(const PermissionGroup& group, const Places& places, Beside beside);

  void AddTo(PermitFile& permit) const;

  // The line of the first such entry; 0 when there is none.
  int LineOf(const FolderElement& entry) const;

 private:
  std::vector<FolderElement> sources;  // URL and Extension
  std::vector<FolderElement> destinations;
};

// The permitted folder for the manifests and sources of the test, and the permitted destination.
constexpr char kRunFolder[] = "{module}\\run";
constexpr char kTarget[] = "{module}\\target";

// "2026-06-25T12:00:00Z", with or without a fraction of seven digits.
FILETIME TimeOf(const std::string& text);
