#pragma once

#include "common/Windows.h"

#include <memory>
#include <string>
#include <vector>

#include "torture/CallCounter.h"
#include "torture/Places.h"

// The system as the module sees it through its import table: every function that can fail asks the counter first. What the
// module opens, allocates and takes references to is put on the counter's account.
//
// Not replaced: what cannot fail (such as GetLocalTime), and what formats text in place.
class FailingSystem {
 public:
  FailingSystem(HMODULE module, CallCounter& counter, Places& places);
  FailingSystem(const FailingSystem&) = delete;
  FailingSystem& operator=(const FailingSystem&) = delete;

  // The names of the functions that are replaced.
  const std::vector<std::string>& Replaced() const { return replaced; }

  // The files that were started; none of them is.
  std::vector<std::string> started;

  // No registrar: registration takes its own table.
  bool hasRegistrar = true;

 private:
  template <class Tag, class Function, class Handler>
  void Replace(const char* name, Handler handler);

  template <class Tag, class Function, class Result, class Describe>
  void MakeFallible(const char* name, Result result, std::vector<DWORD> errors, Describe describe);

  template <class Tag, class Function, class Describe>
  void MakeTaken(const char* name, const char* kind, std::vector<DWORD> errors, Describe describe);

  template <class Tag, class Function, class Select>
  void MakeGivenBack(const char* name, const char* kind, Select select);

  void Refuse(DWORD error);
  HRESULT RefuseWith(HRESULT hr);
  void ReplaceMemory();
  void ReplaceText();
  void ReplaceFiles();
  void ReplaceFileOperations();
  void ReplaceInternet();
  void ReplaceCom();
  void ReplaceTypeLibraries();
  void ReplaceRegistry();
  void ReplaceShell();

  HMODULE module;
  CallCounter& counter;
  Places& places;
  std::vector<std::shared_ptr<void>> patches;
  std::vector<std::string> replaced;
};
