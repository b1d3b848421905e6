// The head of a document: two items, of which the first is kept and the second replaced.

#include "common/Windows.h"

#include <cstring>

#include "CapturedFile.h"
#include "Target.h"
#include "transfer/DocumentHead.h"
#include "transfer/DocumentType.h"
#include "transfer/FileWriter.h"
#include "transfer/Transfer.h"

namespace {

constexpr std::size_t kLongestItem = 511;
constexpr HRESULT kReadFailed = static_cast<HRESULT>(0x80070040);
constexpr HRESULT kWriteFailed = static_cast<HRESULT>(0x80070070);
constexpr HRESULT kWriteShort = static_cast<HRESULT>(0x8007001D);
constexpr char kSystemLine[] = "\r\n<!DOCTYPE VantorManifest SYSTEM \"file://C:\\apps\\manifest.dtd\">";

// Gives the bytes one by one; the read number `failedRead`, counted from 1, fails.
class Bytes : public ByteSource {
 public:
  Bytes(const std::string& allBytes, std::size_t failed) : bytes(allBytes), failedRead(failed) {}

  bool Read(void* buffer, DWORD size, DWORD& count) override {
    HOLDS(size == 1);
    count = 0;
    if (++reads == failedRead) {
      SetLastError(ERROR_NETNAME_DELETED);
      return false;
    }
    if (position < bytes.size()) {
      *static_cast<char*>(buffer) = bytes[position++];
      count = 1;
    }
    return true;
  }

  std::size_t Position() const { return position; }

 private:
  const std::string& bytes;
  std::size_t failedRead;
  std::size_t position = 0;
  std::size_t reads = 0;
};

enum class Outcome { Read, TooLong, Failed };

// What the head of a document has to become.
class ExpectedHead {
 public:
  ExpectedHead(const std::string& documentBytes, std::size_t failed, unsigned write, bool isShort)
      : document(documentBytes), failedRead(failed), failedWrite(write), isFailureShort(isShort) {}

  HRESULT Prepare(DWORD flags, const std::string& notFound) {
    bool isNotFoundPage = false;
    bool isOpen = false;
    switch (TakeItem()) {
      case Outcome::TooLong:
        return E_FAIL;
      case Outcome::Failed:
        break;
      case Outcome::Read:
        isNotFoundPage = Holds(notFound);
        if (!isNotFoundPage && BeginsWith(Lowered(item), "<?xml")) {
          Write(item);
          isOpen = item.size() < 7 || item.substr(item.size() - 2) != "?>";
        }
    }
    const Outcome outcome = TakeItem();
    if (outcome != Outcome::Read)
      return outcome == Outcome::TooLong ? E_FAIL : kReadFailed;
    if (Holds(notFound))
      return kNotFoundResult;
    if (!Holds("<!DOCTYPE"))
      return isNotFoundPage ? kNotFoundResult : E_FAIL;
    if (isOpen)
      return E_FAIL;
    if (flags & kTransferSystemLine)
      return Write(flags & kTransferManifest ? kSystemLine : item);
    if (flags & kTransferManifest)
      return Write(kManifestDTD);
    return flags & kTransferPermitFile ? Write(kPermitDTD) : S_OK;
  }

  std::string written;
  std::size_t position = 0;

 private:
  // A read for each byte, and one for the end of the data.
  Outcome TakeItem() {
    const std::size_t bracket = document.find('>', position);
    const bool hasEnd = bracket != std::string::npos;
    item = document.substr(position, hasEnd ? bracket - position + 1 : bracket);
    const bool isTooLong = item.size() > kLongestItem;
    const std::size_t needed = isTooLong ? kLongestItem + 1 : item.size() + (hasEnd ? 0 : 1);
    if (failedRead > reads && failedRead <= reads + needed) {
      position += failedRead - reads - 1;
      reads = failedRead;
      return Outcome::Failed;
    }
    reads += needed;
    position += isTooLong ? needed : item.size();
    return isTooLong ? Outcome::TooLong : Outcome::Read;
  }

  bool Holds(const std::string& text) const { return !text.empty() && UpToZero(item).find(text) != std::string::npos; }

  HRESULT Write(const std::string& text) {
    if (++writes != failedWrite) {
      written += text;
      return S_OK;
    }
    written += isFailureShort ? text.substr(0, text.size() - 1) : "";
    return isFailureShort ? kWriteShort : kWriteFailed;
  }

  const std::string& document;
  std::size_t failedRead;
  unsigned failedWrite;
  bool isFailureShort;
  std::string item;
  std::size_t reads = 0;
  unsigned writes = 0;
};

}  // namespace

void FuzzHead(Input& input) {
  const unsigned choices = input.TakeByte();
  const DWORD flags = kTransferXMLDocument | (choices & (kTransferManifest | kTransferPermitFile | kTransferSystemLine));
  const bool isShort = choices & 0x10;
  const unsigned failures = input.TakeByte();
  const unsigned failedWrite = failures & 3;
  const std::size_t failedRead = choices & 0x20 ? 1 + input.TakeByte() + (failures >> 2) : 0;
  const std::string notFound = choices & 0x40 ? input.TakeText() : "";
  const std::string document = input.TakeRuns();
  BuildSystemLines("C:\\apps");

  CapturedFile file;
  file.FailWrite(failedWrite, isShort);
  Bytes source(document, failedRead);
  FileWriter destination(CapturedFile::kPath);
  HOLDS(destination.Create(FILE_ATTRIBUTE_NORMAL));
  const HRESULT hr = PrepareDocumentHead(source, destination, flags, choices & 0x40 ? notFound.c_str() : nullptr);
  HOLDS(destination.Close());

  ExpectedHead expected(document, failedRead, failedWrite, isShort);
  HOLDS(hr == expected.Prepare(flags, notFound));
  HOLDS(file.Bytes() == expected.written);
  HOLDS(source.Position() == expected.position);
  HOLDS(source.Position() <= 2 * (kLongestItem + 1));
}
