#include "transfer/Transfer.h"

#include <shlwapi.h>

#include <cstring>

#include "common/Handles.h"
#include "common/SystemError.h"
#include "common/Text.h"
#include "log/LogFile.h"
#include "transfer/ByteSource.h"
#include "transfer/CookieWriter.h"
#include "transfer/DocumentHead.h"
#include "transfer/FileWriter.h"
#include "transfer/URLText.h"
#include "transfer/WebSource.h"

namespace {

constexpr SourceFile kSourceFile = {"FileUtilities", 1000};

constexpr DWORD kChunkBytes = 4096;

class LocalSource : public ByteSource {
 public:
  HRESULT Open(const char* path) {
    file = FileHandle(CreateFileA(path, GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (file && IsDevice(file))  // reading from a console or a port may wait for ever
      return Reported(HERE, HRESULT_FROM_WIN32(ERROR_INVALID_NAME), "Opening '%s' failed.", path);
    if (!file)
      return Reported(HERE, ResultFromLastError(), "Opening '%s' failed.", path);
    return S_OK;
  }

  bool Read(void* buffer, DWORD size, DWORD& count) override {
    count = 0;
    return ReadFile(file.Get(), buffer, size, &count, nullptr) != FALSE;
  }

 private:
  FileHandle file;
};

// A source that somebody listens to.
class ObservedSource : public ByteSource {
 public:
  ObservedSource(ByteSource& observedSource, TransferObserver& sourceObserver)
      : source(observedSource), observer(sourceObserver) {}

  bool Read(void* buffer, DWORD size, DWORD& count) override {
    if (!source.Read(buffer, size, count))
      return false;
    observer.BytesArrived(buffer, count);
    return true;
  }

 private:
  ByteSource& source;
  TransferObserver& observer;
};

// What a transfer was asked for, beside its source.
struct Order {
  const char* sourceName;
  const char* destinationName;
  DWORD attributes;
  const FILETIME* time;
  DWORD flags;
  const char* notFoundText;    // never empty; null when the source is not searched
  TransferObserver* observer;  // or null

  bool IsComplete() const { return sourceName && *sourceName && destinationName && *destinationName; }
};

// The bytes of one chunk, with the end of the chunk before it in front of them, so that a text that stands across the border
// is found too. The search takes the bytes as text: a zero byte ends it.
class SearchedChunk {
 public:
  explicit SearchedChunk(const char* notFoundText)
      : sought(notFoundText), carryBytes(notFoundText ? std::strlen(notFoundText) : 0) {}

  bool Allocate() {
    buffer = AllocateText(carryBytes + kChunkBytes + 1);
    return buffer != nullptr;
  }

  char* Bytes() const { return buffer.get() + carryBytes; }

  // True when the text stands in the first `count` bytes or in the carried end with them. Else carries their end over.
  bool HoldsNotFoundText(DWORD count) {
    if (carryBytes == 0)
      return false;
    Bytes()[count] = '\0';
    if (StrStrA(buffer[0] ? buffer.get() : Bytes(), sought))
      return true;
    if (count > carryBytes) {
      std::memcpy(buffer.get(), Bytes() + count - carryBytes, carryBytes);
    } else {
      buffer[0] = '\0';
      LogInfo(HERE, "Read in too few bytes to check for 'not found'.");
    }
    return false;
  }

 private:
  const char* sought;
  std::size_t carryBytes;
  OwnedText buffer;
};

HRESULT CopyBytes(ByteSource& source, DestinationWriter& destination, const Order& order, SearchedChunk& chunk) {
  for (;;) {
    DWORD count = 0;
    if (!source.Read(chunk.Bytes(), kChunkBytes, count))
      return Reported(HERE, ResultFromLastError(), "Reading '%s' failed.", order.sourceName);
    if (count == 0)
      return S_OK;
    if (chunk.HoldsNotFoundText(count))
      return Reported(HERE, kNotFoundResult, "Source URL '%s' not found.", order.sourceName);
    if (!destination.Write(chunk.Bytes(), count))
      return Reported(HERE, ResultFromLastError(), "Writing '%s' failed.", order.destinationName);
  }
}

HRESULT Fill(ByteSource& source, DestinationWriter& destination, const Order& order) {
  SearchedChunk chunk(order.notFoundText);
  if (!chunk.Allocate())
    return Reported(HERE, E_OUTOFMEMORY, "Copy buffer creation failed.");
  if (order.flags & kTransferXMLDocument) {
    const HRESULT hr = PrepareDocumentHead(source, destination, order.flags, order.notFoundText);
    if (FAILED(hr)) {
      LogErrorTrace(HERE, S_OK);
      return hr;
    }
  }
  const HRESULT hr = CopyBytes(source, destination, order, chunk);
  if (SUCCEEDED(hr) && order.time && !destination.SetTime(*order.time))
    return Reported(HERE, ResultFromLastError(), "Writing '%s' failed.", order.destinationName);
  return hr;
}

HRESULT TransferInto(DestinationWriter& destination, ByteSource& source, const Order& order) {
  if (!destination.Create(order.attributes))
    return Reported(HERE, ResultFromLastError(), "Creating '%s' failed.", order.destinationName);
  HRESULT hr = Fill(source, destination, order);
  if (!destination.Close() && SUCCEEDED(hr))
    hr = Reported(HERE, ResultFromLastError(), "Writing '%s' failed.", order.destinationName);
  if (FAILED(hr))
    destination.Delete();
  return hr;
}

HRESULT TransferUnobserved(ByteSource& source, const Order& order) {
  if (order.flags & kTransferCookie) {
    CookieWriter cookie(order.destinationName);
    return TransferInto(cookie, source, order);
  }
  FileWriter file(order.destinationName);
  return TransferInto(file, source, order);
}

HRESULT TransferFrom(ByteSource& source, const Order& order) {
  if (!order.observer)
    return TransferUnobserved(source, order);
  ObservedSource observed(source, *order.observer);
  return TransferUnobserved(observed, order);
}

}  // namespace

HRESULT FetchURL(const char* source, const char* destination, DWORD attributes, const FILETIME* time, DWORD flags,
                 const char* notFoundText, TransferObserver* observer) {
  if (source && IsWebURL(source))
    return DownloadURL(source, destination, attributes, time, flags, notFoundText, observer);
  return CopyLocalFile(source, destination, attributes, time, flags, observer);
}

HRESULT DownloadURL(const char* source, const char* destination, DWORD attributes, const FILETIME* time, DWORD flags,
                    const char* notFoundText, TransferObserver* observer) {
  const bool isSearched = notFoundText && *notFoundText;
  const Order order = {source, destination, attributes, time, flags, isSearched ? notFoundText : nullptr, observer};
  if (!order.IsComplete())
    return Traced(HERE, E_INVALIDARG);
  WebSource web;
  const HRESULT hr = web.Open(source);
  return FAILED(hr) ? hr : TransferFrom(web, order);
}

HRESULT CopyLocalFile(const char* source, const char* destination, DWORD attributes, const FILETIME* time, DWORD flags,
                      TransferObserver* observer) {
  const Order order = {source, destination, attributes, time, flags, nullptr, observer};
  if (!order.IsComplete())
    return Traced(HERE, E_INVALIDARG);
  LocalSource local;
  const HRESULT hr = local.Open(source);
  return FAILED(hr) ? hr : TransferFrom(local, order);
}
