#pragma once

#include "common/Windows.h"

#include <functional>
#include <memory>

// Replaces the entry of one imported function in a module's import table, and puts it back. Fails the test when the module
// does not import the function: a patch that does nothing would let a test pass for the wrong reason.
class ImportPatch {
 public:
  ImportPatch(HMODULE module, const char* function, void* replacement);
  ~ImportPatch();
  ImportPatch(const ImportPatch&) = delete;
  ImportPatch& operator=(const ImportPatch&) = delete;

  void* Original() const { return original; }

 private:
  void Set(void* function);

  void** entry = nullptr;
  void* original = nullptr;
};

// A system function that goes through `handler` for the lifetime of the object:
//
//   PATCH_IMPORT(writes, WriteFile, [&](auto original, auto... arguments) { ++count; return original(arguments...); });
//   PATCH_IMPORT(diskFull, WriteFile, FailWith(FALSE, ERROR_DISK_FULL));
//
// The code under test is linked into the test program, so the program's own import table is patched; a module handle can be
// given for a loaded DLL. A handler that calls the patched function itself gets the original, or the handler of the patch
// that was made before it. A handler may throw where the programs' own code calls it; the module's has no exceptions, and in
// 32 bit none passes through it.
template <class Tag, class Function>
class ImportedFunction;

template <class Tag, class Result, class... Arguments>
class ImportedFunction<Tag, Result(WINAPI*)(Arguments...)> {
 public:
  using Function = Result(WINAPI*)(Arguments...);
  using Handler = std::function<Result(Function, Arguments...)>;

  ImportedFunction(const char* name, Handler replacement, HMODULE module = nullptr)
      : handler(std::move(replacement)), previous(active) {
    active = this;
    patch = std::make_unique<ImportPatch>(module, name, reinterpret_cast<void*>(&Call));
  }
  ~ImportedFunction() {
    patch.reset();
    active = previous;
  }

 private:
  // The same function serves all patches of one Tag, so a call from inside a handler looks for the patch below it.
  static Result WINAPI Call(Arguments... arguments) {
    ImportedFunction* self = active;
    while (self->isInside && self->previous)
      self = self->previous;
    const auto original = reinterpret_cast<Function>(self->patch->Original());
    if (self->isInside)
      return original(arguments...);
    self->isInside = true;
    struct Leave {
      bool& flag;
      ~Leave() { flag = false; }
    } leave{self->isInside};
    return self->handler(original, arguments...);
  }

  inline static ImportedFunction* active = nullptr;
  Handler handler;
  std::unique_ptr<ImportPatch> patch;
  ImportedFunction* previous;
  bool isInside = false;
};

// PATCH_IMPORT(name of the variable, function, handler)
#define PATCH_IMPORT(variable, function, ...) \
  ImportedFunction<struct function##Import, decltype(&::function)> variable(#function, __VA_ARGS__)

// A handler: every call fails with `result` and the thread's last error `error`, and the system is not asked.
template <class Result>
auto FailWith(Result result, DWORD error) {
  return [=](auto, auto...) {
    SetLastError(error);
    return result;
  };
}

// A handler: as FailWith, for call number `call` only (counted from 1).
template <class Result>
auto FailCall(int call, Result result, DWORD error) {
  return [=, count = 0](auto original, auto... arguments) mutable -> decltype(original(arguments...)) {
    if (++count != call)
      return original(arguments...);
    SetLastError(error);
    return result;
  };
}
