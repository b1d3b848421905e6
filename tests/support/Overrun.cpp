// Writes behind the end of a block of the heap, on purpose: the heap checks have to see it (scripts/test --heap-check).
// Exit code 0 when the check that follows every test does.

#include "common/Windows.h"

int main() {
  auto* const block = static_cast<volatile char*>(HeapAlloc(GetProcessHeap(), 0, 24));
  if (!block || !HeapValidate(GetProcessHeap(), 0, nullptr))
    return 2;
  block[24] = 'x';
  return HeapValidate(GetProcessHeap(), 0, nullptr) ? 1 : 0;
}
