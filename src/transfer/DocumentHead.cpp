#include "transfer/DocumentHead.h"

#include <cstring>

#include "common/SystemError.h"
#include "common/Text.h"
#include "log/LogFile.h"
#include "transfer/DocumentType.h"
#include "transfer/Transfer.h"

namespace {

constexpr SourceFile kSourceFile = {"FileUtilities", 3000};

constexpr DWORD kItemBytes = 512;
constexpr char kDeclaration[] = "<?xml";
constexpr char kDocumentType[] = "<!DOCTYPE";

// One markup item: the bytes up to and including the next '>', or to the end of the data; zero-terminated.
struct HeadItem {
  char text[kItemBytes];
  DWORD length = 0;
  bool isTooLong = false;

  bool Contains(const char* sought) const { return sought && *sought && std::strstr(text, sought); }

  // A declaration that did not end before its first '>'.
  bool IsOpenDeclaration() const {
    return BeginsWithNoCase(text, kDeclaration) && std::memcmp(text + length - 2, "?>", 2) != 0;
  }
};

HRESULT ReadItem(ByteSource& source, HeadItem& item) {
  item.length = 0;
  item.text[0] = '\0';
  for (;;) {
    char character;
    DWORD count = 0;
    if (!source.Read(&character, 1, count))
      return Reported(HERE, ResultFromLastError(), "Reading failed.");
    if (count == 0)
      return S_OK;
    if (item.length + 1 == kItemBytes) {  // a head that long is no document's: refused rather than cut
      item.isTooLong = true;
      return Reported(HERE, E_FAIL, "Invalid XML document ('%8s').", item.text);
    }
    item.text[item.length++] = character;
    item.text[item.length] = '\0';
    if (character == '>')
      return S_OK;
  }
}

HRESULT WriteText(DestinationWriter& destination, const char* text, std::size_t length) {
  return destination.Write(text, static_cast<DWORD>(length)) ? S_OK : ResultFromLastError();
}

HRESULT WriteManifestDTD(DestinationWriter& destination) {
  const HRESULT hr = WriteText(destination, kManifestDTD, std::strlen(kManifestDTD));
  if (FAILED(hr))
    LogError(HERE, hr, "Writing Manfiest DTD in XML failed.");
  return hr;
}

HRESULT WritePermitDTD(DestinationWriter& destination) {
  const HRESULT hr = WriteText(destination, kPermitDTD, std::strlen(kPermitDTD));
  if (FAILED(hr))
    LogError(HERE, hr, "Writing Permit DTD in XML failed.");
  return hr;
}

// A manifest refers to the module's file; any other document keeps what it came with.
HRESULT WriteSystemLine(DestinationWriter& destination, DWORD flags, const HeadItem& own) {
  const bool isManifest = (flags & kTransferManifest) != 0;
  const char* const line = isManifest ? GetManifestSystemLine() : own.text;
  if (!line)
    return Reported(HERE, E_UNEXPECTED, "Writing DTD Path failed.");
  const HRESULT hr = WriteText(destination, line, isManifest ? std::strlen(line) : own.length);
  return FAILED(hr) ? Reported(HERE, hr, "Writing DTD Path failed.") : hr;
}

HRESULT WriteDocumentType(DestinationWriter& destination, DWORD flags, const HeadItem& own) {
  if (flags & kTransferSystemLine)
    return WriteSystemLine(destination, flags, own);
  if (flags & kTransferManifest) {
    const HRESULT hr = WriteManifestDTD(destination);
    return FAILED(hr) ? Reported(HERE, hr, "Writing Manifest DTD in XML failed.") : hr;
  }
  if (flags & kTransferPermitFile) {
    const HRESULT hr = WritePermitDTD(destination);
    return FAILED(hr) ? Reported(HERE, hr, "Writing Permit DTD in XML failed.") : hr;
  }
  return S_OK;
}

// What is wrong with the declaration is logged and does not end the document: its document type, which has to come next,
// decides.
void MoveDeclaration(const HeadItem& item, DestinationWriter& destination) {
  if (!BeginsWithNoCase(item.text, kDeclaration)) {
    LogError(HERE, E_FAIL, "Not an XML document ('%8s').", item.text);
  } else {
    const HRESULT hr = WriteText(destination, item.text, item.length);
    if (FAILED(hr))
      LogError(HERE, hr, "Writing failed.");
  }
}

}  // namespace

HRESULT PrepareDocumentHead(ByteSource& source, DestinationWriter& destination, DWORD flags, const char* notFoundText) {
  HeadItem declaration;
  HRESULT hr = ReadItem(source, declaration);
  if (declaration.isTooLong)
    return Traced(HERE, hr);
  bool isNotFoundPage = false;
  bool isOpen = false;
  if (FAILED(hr)) {
    LogErrorTrace(HERE, hr);  // the next read tells whether the source is lost
  } else if (declaration.Contains(notFoundText)) {
    LogError(HERE, kNotFoundResult, "Source URL not found.");
    isNotFoundPage = true;  // unless a document type follows: then that decides, as for every first item
  } else {
    MoveDeclaration(declaration, destination);
    isOpen = declaration.IsOpenDeclaration();
  }

  HeadItem item;
  hr = ReadItem(source, item);
  if (FAILED(hr))
    return Traced(HERE, hr);
  if (item.Contains(notFoundText))
    return Reported(HERE, kNotFoundResult, "Source URL not found.");
  if (!item.Contains(kDocumentType)) {
    LogError(HERE, E_FAIL, "Invalid XML document ('%8s').", item.text);
    return isNotFoundPage ? kNotFoundResult : E_FAIL;
  }
  // An open instruction would take the module's document type for its own text, and the document could bring another one.
  if (isOpen)
    return Reported(HERE, E_FAIL, "Invalid XML document ('%8s').", declaration.text);
  return WriteDocumentType(destination, flags, item);
}
