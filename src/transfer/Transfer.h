#pragma once

#include "common/Windows.h"

// How a transfer treats what it brings: a set of bits.
constexpr DWORD kTransferXMLDocument = 0x01;  // check the head of the document and put the module's document type into it
constexpr DWORD kTransferManifest = 0x02;     // the document is a manifest
constexpr DWORD kTransferPermitFile = 0x04;   // the document is a permission file
constexpr DWORD kTransferSystemLine = 0x08;   // refer to the document type's file instead of writing it into the document
constexpr DWORD kTransferCookie = 0x10;       // the destination is a cookie, not a file

// Hears of the bytes of a transfer.
class TransferObserver {
 public:
  // The next bytes of the source, as they came.
  virtual void BytesArrived(const void* bytes, DWORD count) = 0;

 protected:
  ~TransferObserver() = default;
};

// The result of a transfer whose source turned out to be a page that says that there is no such file.
constexpr HRESULT kNotFoundResult = static_cast<HRESULT>(0x80070002);

// Brings the bytes of `source` to `destination`, in chunks of 4 KiB. A source that begins with "http:" or "https:" is asked
// of its server, never of a cache; any other is the name of a local file, taken as it is. The destination gets `attributes`,
// and `time` (may be null) as its times. `notFoundText` (may be null or empty) marks a page by which a web server says with
// success that there is no such file: where the text is found in the bytes, also across the border of two chunks, the result
// is kNotFoundResult. The bytes are searched as text, chunk by chunk: a zero byte ends the search of its chunk, and may end
// that of the next one; and a text across a border is found only when the chunk before the border is longer than the text.
// Local files are not searched. `observer` may be null.
//
// S_OK; E_INVALIDARG for an empty or missing name; the system's error as a result code; kNotFoundResult; E_FAIL for an XML
// document with a head that is none. Whatever the failure, no file is left at the destination once it was created.
[[nodiscard]] HRESULT FetchURL(const char* source, const char* destination, DWORD attributes, const FILETIME* time,
                               DWORD flags, const char* notFoundText, TransferObserver* observer = nullptr);

// The two ways of FetchURL.
[[nodiscard]] HRESULT DownloadURL(const char* source, const char* destination, DWORD attributes, const FILETIME* time,
                                  DWORD flags, const char* notFoundText, TransferObserver* observer = nullptr);
[[nodiscard]] HRESULT CopyLocalFile(const char* source, const char* destination, DWORD attributes, const FILETIME* time,
                                    DWORD flags, TransferObserver* observer = nullptr);
