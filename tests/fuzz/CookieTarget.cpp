// The text of a cookie, made alone and by a writer that is given the value in pieces.

#include "common/Windows.h"

#include <wininet.h>

#include <algorithm>

#include "Target.h"
#include "support/ImportPatch.h"
#include "transfer/CookieText.h"
#include "transfer/CookieWriter.h"

namespace {

constexpr std::size_t kMostDateCharacters = 29;
constexpr std::size_t kMostPieces = 64;
constexpr char kURL[] = "http://h/cookie";

// What stands behind the value: nothing, or the expiry as far as its room goes.
std::string Ending(const FILETIME& expiry) {
  SYSTEMTIME time;
  if ((expiry.dwLowDateTime == 0 && expiry.dwHighDateTime == 0) || !FileTimeToSystemTime(&expiry, &time))
    return "";
  char date[100];
  char clock[100];
  if (!GetDateFormatA(LOCALE_USER_DEFAULT, 0, &time, "ddd',' dd-MMM-yyyy ", date, sizeof(date)))
    return "";
  const std::string front = date;
  if (front.size() > kMostDateCharacters)
    return "";
  const bool hasClock = GetTimeFormatA(LOCALE_USER_DEFAULT, 0, &time, "HH:mm:ss 'GMT'", clock, sizeof(clock)) != 0;
  const bool fits = hasClock && front.size() + std::string(clock).size() <= kMostDateCharacters;
  return "; expires = " + front + (fits ? clock : "");
}

}  // namespace

void FuzzCookie(Input& input) {
  const unsigned choices = input.TakeByte();
  UseCodePage(choices & 1);
  const FILETIME expiry = {static_cast<DWORD>(input.TakeNumber(4)), static_cast<DWORD>(input.TakeNumber(4))};
  const std::size_t smallestPiece = 1 + input.TakeByte();
  const std::string bytes = input.TakeRuns();
  const std::size_t pieceBytes = std::max(smallestPiece, bytes.size() / kMostPieces);
  const bool hasExpiry = choices & 2;
  const bool isAccepted = !(choices & 4);
  const std::string ending = Ending(expiry);

  const OwnedText alone = BuildCookieText(UpToZero(bytes).c_str(), expiry);
  HOLDS(alone && alone.get() == UpToZero(bytes) + ending);

  bool isSet = false;
  PATCH_IMPORT(cookies, InternetSetCookieA, [&](auto, const char* url, const char* name, const char* data) -> BOOL {
    HOLDS(!isSet && url == std::string(kURL) && !name);
    HOLDS(data == UpToZero(bytes) + (hasExpiry ? ending : ""));
    isSet = true;
    return isAccepted;
  });
  CookieWriter writer(kURL);
  HOLDS(writer.Create(FILE_ATTRIBUTE_NORMAL));
  for (std::size_t i = 0; i < bytes.size(); i += pieceBytes) {
    const std::string piece = bytes.substr(i, pieceBytes);
    HOLDS(writer.Write(piece.data(), static_cast<DWORD>(piece.size())));
  }
  if (hasExpiry)
    HOLDS(writer.SetTime(expiry));
  HOLDS(writer.Close() == isAccepted);
  HOLDS(isSet);
}
