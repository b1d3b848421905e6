#pragma once

#include <string>

#include "decisions/Vectors.h"

// The file of a question as it stands in a folder of its own, with the names that are taken.
class ExistingFileOnDisk {
 public:
  // The folder is made below `base`; its name is `number`.
  ExistingFileOnDisk(const FileQuestion& fileQuestion, const std::string& base, std::size_t number);

  const std::string& Path() const { return path; }
  std::string Folder() const;
  std::string Name() const;
  std::string MovedTo() const;  // empty when it is not to be moved

  // The command for it, from a source whose URL ends in the file's name.
  std::string Command(const std::string& webFolder, const std::string& localFolder) const;

  // What became of it: it is as it was; or what came from the web or from a local source is there.
  void ExpectUntouched() const;
  void ExpectWritten() const;
  void ExpectMoved() const;

  // Whichever of these the question's answers say of a run.
  void ExpectOutcome() const;

 private:
  std::string LocalSource(const std::string& localFolder) const;

  const FileQuestion& question;
  std::size_t number;
  Places places;
  std::string path;
};

constexpr char kOldContent[] = "old";
constexpr char kTakenContent[] = "taken";
constexpr char kNewContent[] = "not found";  // what the test's server sends for every name
