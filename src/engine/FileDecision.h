#pragma once

#include "common/Windows.h"

#include "engine/Machine.h"
#include "xml/XMLFileTime.h"

// What is to become of a file that already stands where a command is to write. Nothing is done here, and nothing is told:
// ExistingFile carries a decision out.

// The policies of a manifest; any other number counts as Overwrite.
enum class IfFileExists : LONG { Overwrite = 0, Skip = 1, Cancel = 2, Rename = 3, Update = 4 };

constexpr HRESULT kCancelledResult = static_cast<HRESULT>(0x800704C7);

// The attributes that keep a file from being replaced without force.
constexpr DWORD kProtectingAttributes = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN;

enum class FileAction {
  Replace,  // it may be written
  LeaveAlone,
  Cancel,     // the command ends
  MoveAside,  // it gets `newName`, then its own name is free
  Refuse,     // the command fails
};

enum class FileRefusal {
  None,
  NotFound,   // its attributes cannot be had
  Protected,  // it is read-only or hidden, and nothing forces it
  NoTime,     // its time cannot be had
  Folder,     // it is a folder, which is not moved
};

struct FileDecision {
  FileAction action = FileAction::Replace;

  // What carrying it out gives when nothing fails: S_OK when the file may be written, S_FALSE when it is left alone,
  // kCancelledResult, or the code of the refusal.
  HRESULT result = S_OK;
  FileRefusal refusal = FileRefusal::None;

  // It loses the attributes read-only and hidden first.
  bool losesProtection = false;

  // For MoveAside: the last name of all gives way, because all are taken.
  bool isNewNameTaken = false;

  // For MoveAside: the first free name of 000 to 999 in place of the extension, or the last one; else empty.
  char newName[MAX_PATH];

  FileDecision() { newName[0] = '\0'; }
  FileDecision(const FileDecision&) = delete;
  FileDecision& operator=(const FileDecision&) = delete;

  void Set(FileAction newAction, HRESULT hr) {
    action = newAction;
    result = hr;
  }
  void Refuse(FileRefusal reason, HRESULT hr) {
    Set(FileAction::Refuse, hr);
    refusal = reason;
  }
};

// What `policy` says of the existing file `fileName`. `time` is the command's own time, for Update: the file is replaced
// when it is older, or when the command has no time. `force` lets a read-only or hidden file be replaced. `machine` is asked
// for attributes, times and names. `decision` is new.
void DecideOnExistingFile(IfFileExists policy, const char* fileName, bool force, const CXMLFileTime& time,
                          const Machine& machine, FileDecision& decision);

// The parts of it: whether the file may be overwritten (Replace or Refuse), and to which name it is moved (MoveAside or
// Refuse).
void DecideOverwrite(const char* fileName, bool force, const Machine& machine, FileDecision& decision);
void DecideRename(const char* fileName, const Machine& machine, FileDecision& decision);
