#pragma once

#include "common/Windows.h"

#include <ocidl.h>

// Tells the browser that hosts `sitedControl` to go to `url`. The browser is found by way of the site's
// IOleClientSite and its services. S_OK or the first step's failure, which is logged.
[[nodiscard]] HRESULT NavigateBrowser(IObjectWithSite* sitedControl, BSTR url);
