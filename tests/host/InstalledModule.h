#pragma once

#include "common/Windows.h"

#include <wrl/client.h>

#include <string>

#include "control/norvik_h.h"
#include "support/Files.h"

// The built DLL as it is installed: a copy in a folder of its own, in which the permission file is put beside it. What the
// permission file left in the Internet cache goes with the object.
class InstalledModule {
 public:
  // `subfolder` is the folder's own name, below a temporary folder.
  explicit InstalledModule(const std::string& subfolder = "module");
  ~InstalledModule();
  InstalledModule(const InstalledModule&) = delete;
  InstalledModule& operator=(const InstalledModule&) = delete;

  const std::string& Folder() const { return folder; }
  std::string Path() const { return folder + "\\norvik.dll"; }
  std::string PermitPath() const { return folder + "\\permit.xml"; }

  // A permission file with one permitted URL and one permitted folder, which are taken as they are given, and with the
  // extensions txt, htm and dll.
  void WritePermit(const std::string& url, const std::string& destination) const;

 private:
  TemporaryFolder temporary;
  std::string folder;
};

// A loaded DLL with its four entry points, freed with the object.
class LoadedModule {
 public:
  explicit LoadedModule(const std::string& path);
  ~LoadedModule() { Free(); }
  LoadedModule(const LoadedModule&) = delete;
  LoadedModule& operator=(const LoadedModule&) = delete;

  HMODULE Handle() const { return module; }

  HRESULT CanUnloadNow() const;
  HRESULT GetClassObject(REFCLSID classId, REFIID interfaceId, void** object) const;
  HRESULT RegisterServer() const;
  HRESULT UnregisterServer() const;

  // Through the class factory; a control that cannot be made fails the test.
  Microsoft::WRL::ComPtr<IClassFactory> Factory() const;
  Microsoft::WRL::ComPtr<IAXNorvik> CreateControl() const;

  // False when the DLL is still there afterwards.
  bool Free();

 private:
  template <class Function>
  Function Find(const char* name) const;

  std::string path;
  HMODULE module;
};
