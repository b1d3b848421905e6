#pragma once

#include "common/Windows.h"

#include "common/Text.h"

// The data of a cookie: `value`, and behind it "; expires = " and the expiry, a date in UTC with day and month names of the
// user's locale (Sat, 01-Jan-2000 00:00:00 GMT). A zero expiry, or one that cannot be formatted, leaves that part out.
// Null when out of memory, with the thread's last error set to ERROR_OUTOFMEMORY.
OwnedText BuildCookieText(const char* value, const FILETIME& expiry);
