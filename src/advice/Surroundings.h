#pragma once

#include <string>
#include <vector>

// A folder of the machine, and what it is in words: "the Windows folder".
struct NamedFolder {
  std::wstring path;
  std::string words;
};

// What findings need to know of the machine on which a document is used.
class Surroundings {
 public:
  Surroundings() = default;
  Surroundings(const Surroundings&) = delete;
  Surroundings& operator=(const Surroundings&) = delete;
  virtual ~Surroundings() = default;

  // An account that may change the file or folder, or make it where it is missing, although it is neither an administrator's
  // nor the system's: its name. Empty when there is none, and when the machine does not tell.
  virtual std::string WriterOf(const std::wstring& path) const = 0;

  // The name of another folder beside this one that begins with its name; empty when there is none.
  virtual std::string NeighbourOf(const std::wstring& folder) const = 0;

  // Folders that no manifest should be able to write into as a whole.
  virtual std::vector<NamedFolder> GuardedFolders() const = 0;

  // Folders from which programs start by themselves.
  virtual std::vector<NamedFolder> StartupFolders() const = 0;

  // The folder in which the users' profiles lie; empty when it is unknown.
  virtual std::wstring ProfilesFolder() const = 0;

  // Whether the system runs files with this extension, which has no dot.
  virtual bool IsProgram(const std::string& extension) const = 0;
};

// This machine. Nothing is asked of another one: a path on a server has no writers and no neighbours.
const Surroundings& ThisMachinesSurroundings();
