#pragma once

#include "common/Windows.h"

#include <memory>

#include "common/ListItem.h"
#include "engine/Command.h"
#include "xml/XMLUtilities.h"

// A kind of command as a manifest holds it.
struct CommandKind {
  const wchar_t* elementName;
  const char* allocationFailure;  // the message when a command cannot be allocated
  const char* sourceFile;         // the name that signs the log lines

  // A command from its element, with the code of its reading; null when out of memory.
  std::unique_ptr<CCommand> (*make)(IXMLDOMNode* node, HRESULT* result);
};

// Makes a command of each element of the kind, in document order, and appends it to `commands`. The first failure ends the
// collection and is returned; a command whose own reading failed is still appended, as the last one.
[[nodiscard]] HRESULT CollectCommands(IXMLDOMDocument2* document, const CommandKind& kind, CListBuilder& commands);
