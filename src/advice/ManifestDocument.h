#pragma once

#include "common/Windows.h"

#include <memory>
#include <string>
#include <vector>

#include "advice/LocalDocument.h"
#include "advice/Outline.h"
#include "engine/CopyCommand.h"

// A command of a manifest, as the module has read it and as it stands.
struct ManifestCommand {
  int number;  // in the order in which the commands run, from 1
  const CCopyCommand* command;
  const Element* element;  // `Copy` or `Open`
};

// A manifest as the module reads it, and as it stands. The commands are made as for a run, and none is run.
class ManifestDocument {
 public:
  // Reads a manifest. One that the module refuses is no failure: IsUsable tells. Unanswered when it cannot be opened, or as
  // LocalDocument is.
  explicit ManifestDocument(const LocalDocument& document);
  explicit ManifestDocument(const std::wstring& place);
  ManifestDocument(const ManifestDocument&) = delete;
  ManifestDocument& operator=(const ManifestDocument&) = delete;

  // The full path, or the URL.
  const std::wstring& Location() const { return location; }

  // Whether the module takes it; if not, the code and the first thing that it complains about.
  bool IsUsable() const { return SUCCEEDED(code); }
  HRESULT Code() const { return code; }
  const std::string& Complaint() const { return complaint; }

  // As it stands, and its bytes.
  const Outline& Text() const { return outline; }
  const std::string& Bytes() const { return bytes; }

  // In the order in which they run; none when it is not usable.
  const std::vector<ManifestCommand>& Commands() const { return commands; }

 private:
  HRESULT LoadPrepared(const char* preparedFile);
  void PairCommands(const CListItem* first);

  std::wstring location;
  std::string bytes;
  Outline outline;
  HRESULT code = S_OK;
  std::string complaint;
  std::unique_ptr<CListItem> copies;
  std::unique_ptr<CListItem> openings;
  std::vector<ManifestCommand> commands;
};
