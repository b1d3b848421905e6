#include "support/HResult.h"

#include <iomanip>
#include <ostream>

void PrintTo(ResultCode code, std::ostream* stream) {
  *stream << "0x" << std::hex << std::setw(8) << std::setfill('0') << static_cast<unsigned long>(code.value) << std::dec;
}
