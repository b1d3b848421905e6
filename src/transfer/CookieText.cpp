#include "transfer/CookieText.h"

#include <cstring>

namespace {

constexpr char kDatePicture[] = "ddd',' dd-MMM-yyyy ";
constexpr char kTimePicture[] = "HH:mm:ss 'GMT'";
constexpr char kExpires[] = "; expires = ";
constexpr int kDateTextBytes = 30;

void FormatExpiry(const FILETIME& expiry, char (&text)[kDateTextBytes]) {
  text[0] = '\0';
  SYSTEMTIME time;
  const bool isEmpty = expiry.dwLowDateTime == 0 && expiry.dwHighDateTime == 0;
  if (isEmpty || !FileTimeToSystemTime(&expiry, &time))
    return;
  if (!GetDateFormatA(LOCALE_USER_DEFAULT, 0, &time, kDatePicture, text, kDateTextBytes)) {
    text[0] = '\0';
    return;
  }
  const int dateLength = static_cast<int>(std::strlen(text));
  if (!GetTimeFormatA(LOCALE_USER_DEFAULT, 0, &time, kTimePicture, text + dateLength, kDateTextBytes - dateLength))
    text[dateLength] = '\0';
}

}  // namespace

OwnedText BuildCookieText(const char* value, const FILETIME& expiry) {
  char date[kDateTextBytes];
  FormatExpiry(expiry, date);
  OwnedText text = date[0] ? JoinText(value, kExpires, date) : CopyText(value);
  if (!text)
    SetLastError(ERROR_OUTOFMEMORY);
  return text;
}
