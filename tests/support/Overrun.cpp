// Writes behind the end of a block of the heap, on purpose: the heap check has to see it (scripts/test --heap-check).

#include "common/Windows.h"

int main() {
  auto* const block = static_cast<volatile char*>(HeapAlloc(GetProcessHeap(), 0, 24));
  if (!block)
    return 1;
  block[200] = 'x';
  HeapFree(GetProcessHeap(), 0, const_cast<char*>(block));
  return 0;
}
