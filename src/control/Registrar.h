#pragma once

#include "common/Windows.h"

#include "common/RegistrarClass.h"

// The registrar of the system's atl.dll, which carries out registration scripts. No header of the tool chain declares it;
// the order of its methods is that of its interface.
//
// Not in an unnamed namespace: nothing in the module implements the interface, and a compiler that can see all of a class
// takes a class that nobody implements for one that is never called.
struct IRegistrar : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE AddReplacement(const wchar_t* key, const wchar_t* item) = 0;
  virtual HRESULT STDMETHODCALLTYPE ClearReplacements() = 0;
  virtual HRESULT STDMETHODCALLTYPE ResourceRegisterSz(const wchar_t* file, const wchar_t* id, const wchar_t* type) = 0;
  virtual HRESULT STDMETHODCALLTYPE ResourceUnregisterSz(const wchar_t* file, const wchar_t* id, const wchar_t* type) = 0;
  virtual HRESULT STDMETHODCALLTYPE FileRegister(const wchar_t* file) = 0;
  virtual HRESULT STDMETHODCALLTYPE FileUnregister(const wchar_t* file) = 0;
  virtual HRESULT STDMETHODCALLTYPE StringRegister(const wchar_t* script) = 0;
  virtual HRESULT STDMETHODCALLTYPE StringUnregister(const wchar_t* script) = 0;
  virtual HRESULT STDMETHODCALLTYPE ResourceRegister(const wchar_t* file, UINT id, const wchar_t* type) = 0;
  virtual HRESULT STDMETHODCALLTYPE ResourceUnregister(const wchar_t* file, UINT id, const wchar_t* type) = 0;
};

constexpr IID kRegistrarInterface = {0x44EC053B, 0x400F, 0x11D0, {0x9D, 0xCD, 0x00, 0xA0, 0xC9, 0x03, 0x91, 0xD3}};
