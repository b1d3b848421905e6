#include "Patchable.h"

#include <cstdio>
#include <cstdlib>

#include "support/ImportPatch.h"

namespace {

PatchableEntry* first = nullptr;

// Not strcmp: the fuzzer would take the names for something that inputs should hold.
bool IsSame(const char* name, const char* other) {
  for (; *name && *name == *other; ++name)
    ++other;
  return *name == *other;
}

}  // namespace

PatchableEntry::PatchableEntry(const char* functionName, void* implementation)
    : name(functionName), function(implementation), next(first) {
  first = this;
}

PatchableEntry* PatchableEntry::Find(const char* name) {
  PatchableEntry* entry = first;
  while (entry && !IsSame(entry->name, name))
    entry = entry->next;
  return entry;
}

ImportPatch::ImportPatch(HMODULE /*module*/, const char* function, void* replacement) {
  PatchableEntry* const found = PatchableEntry::Find(function);
  if (!found) {
    std::fprintf(stderr, "%s is not PATCHABLE\n", function);
    std::abort();
  }
  entry = &found->function;
  original = *entry;
  Set(replacement);
}

ImportPatch::~ImportPatch() {
  Set(original);
}

void ImportPatch::Set(void* function) {
  *entry = function;
}
