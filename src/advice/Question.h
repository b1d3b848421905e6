#pragma once

#include <string>

#include "transfer/DestinationFolder.h"

// A question to a permission file.

enum class QuestionKind { Manifest, Source, Extension, Folder };

struct Question {
  QuestionKind kind = QuestionKind::Source;
  std::wstring asked;  // a URL, an extension, or the text of the folder

  FolderKind folderKind = FolderKind::Path;  // of a folder
};

const char* NameOf(QuestionKind kind);
