#pragma once

// A stand-in function that a target can replace with PATCH_IMPORT: it is called through an entry that is found by its name,
// as a function of a system's module is called through the import table.
struct PatchableEntry {
  PatchableEntry(const char* functionName, void* implementation);

  static PatchableEntry* Find(const char* name);

  const char* name;
  void* function;
  PatchableEntry* next;
};

// PATCHABLE(result, Function, (parameters), (arguments)) { what it does unless it is patched }
#define PATCHABLE(result, Function, parameters, arguments)                                      \
  static result Function##Itself parameters;                                                    \
  static PatchableEntry Function##Entry(#Function, reinterpret_cast<void*>(&Function##Itself)); \
  result Function parameters {                                                                  \
    return reinterpret_cast<decltype(&Function)>(Function##Entry.function) arguments;           \
  }                                                                                             \
  static result Function##Itself parameters
