// The one file in which the generated header defines the identifiers of the control, its interface and its type library.

#include "common/Windows.h"

#include <initguid.h>

#include "control/norvik_h.h"
