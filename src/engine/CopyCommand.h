#pragma once

#include <memory>

#include "common/Text.h"
#include "engine/Command.h"
#include "engine/ExistingFile.h"
#include "transfer/DestinationFolder.h"
#include "transfer/SourceURL.h"
#include "xml/XMLFileTime.h"
#include "xml/XMLUtilities.h"

// A `Copy` element of a manifest: one file to fetch, where to put it, and what to do with one that is already there.
class CCopyCommand : public CCommand {
 public:
  // Reads the command from its element. `result` (may be null): S_OK or S_FALSE (the destination's own code); E_INVALIDARG
  // without an element; E_POINTER for a missing `Source` or an object that could not be allocated; else the source's or the
  // destination's failure.
  CCopyCommand(IXMLDOMNode* node, HRESULT* result);

  void Dump() const override;

  // Checks source, destination and extension, applies the policy for an existing file, fetches the file and registers it in
  // the Internet cache when that is its destination. Uses neither `context` nor `navigateURL`.
  // S_OK when the file was written; S_FALSE when an existing one was left alone; kCancelledResult when one stopped the
  // command; else the failure.
  [[nodiscard]] HRESULT Execute(DWORD context, const CPermissions* permissions, BSTR* navigateURL) override;

  // The name whose extension is checked; after a run, the name of the file actually written (null for a cookie).
  const char* GetFileName() const { return fileName.get(); }

  // What is checked of it: the extension, and of a cookie the whole name. Null without a name.
  const char* GetCheckedExtension() const;

  // The element's name in a manifest.
  virtual const char* GetElementName() const { return "Copy"; }

  // The folder of the file actually written; null before a run and for a cookie.
  const char* GetFolder() const { return folder.get(); }

  // The source's corrected URL; null before a run.
  const char* GetSourceText() const { return sourceText.get(); }

  // The kind of the destination; the Internet cache when there is none.
  FolderKind GetDestinationKind() const;
  const CSourceURL* GetSource() const { return source.get(); }
  const CDestinationFolder* GetDestination() const { return destination.get(); }

  IfFileExists GetPolicy() const { return policy; }
  bool IsForced() const { return force; }
  DWORD GetFileAttributes() const { return fileAttributes; }
  DWORD GetTransferFlags() const { return transferFlags; }
  const char* GetNotFoundText() const { return notFoundText.get(); }
  const CXMLFileTime& GetTime() const { return time; }

  // The code of the construction.
  HRESULT GetReadingCode() const { return readingCode; }

  // Records the file that was written, in the file name and folder fields; for a cookie both become null.
  void SetWrittenFile(const char* writtenFile);

 private:
  // CopyCommandReader.cpp
  HRESULT Read(IXMLDOMNode* node);
  HRESULT ReadSource(IXMLDOMNode* node);
  HRESULT ReadDestination(IXMLDOMNode* node);
  void ReadFileName(IXMLDOMNode* node);
  void ReadAttributes(IXMLDOMNode* node);
  void ReadPolicy(IXMLDOMNode* node);
  void ReadFileTime(IXMLDOMNode* node);
  void ReadExpireTime(IXMLDOMNode* node);

  HRESULT CheckPermissions(const CPermissions& permissions) const;
  HRESULT Fetch(const char* destinationFile) const;

  OwnedText sourceText;
  OwnedText fileName;
  OwnedText folder;
  std::unique_ptr<CSourceURL> source;
  std::unique_ptr<CDestinationFolder> destination;
  IfFileExists policy = IfFileExists::Overwrite;
  bool force = false;
  DWORD fileAttributes = FILE_ATTRIBUTE_NORMAL;
  DWORD transferFlags = 0;
  OwnedText notFoundText;
  CXMLFileTime time;
  HRESULT readingCode = S_OK;
};

// Makes a command of each `Copy` element of a manifest, in document order. `chain` is the first one, null when there is
// none. E_INVALIDARG without a document or a place for the chain, else S_OK: failures show in the log and in a chain that
// ends with the command that failed.
[[nodiscard]] HRESULT CollectCopyCommands(IXMLDOMDocument2* document, std::unique_ptr<CListItem>* chain);
