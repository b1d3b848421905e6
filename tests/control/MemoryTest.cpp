// A host whose memory has run out, and what the module owes to the heap.

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <set>

#include "host/ControlFixture.h"
#include "host/HostDoubles.h"
#include "support/AllocationFailure.h"
#include "support/HeapBalance.h"
#include "support/ImportPatch.h"

using Microsoft::WRL::ComPtr;

namespace {

using MemoryTest = ControlTest;

TEST_F(MemoryTest, AControlGivesBackAllThatItTook) {
  const BString url = Serve(CopyRefused() + Copy("a.txt") + OpenInBrowser("page.htm"));
  control.Reset();
  const HeapBalance heap(module.Handle());
  {
    const auto other = module.CreateControl();
    EXPECT_LT(0, heap.Outstanding());
    EXPECT_HRESULT(E_FAIL, other->Execute(url.Get()));
    EXPECT_HRESULT(E_ACCESSDENIED, other->Execute(Automation("http://127.0.0.1/control-run.xml").Get()));
    EXPECT_HRESULT(S_OK, other->put_ManifestURL(url.Get()));
    FakeBag empty;
    ComPtr<IPersistPropertyBag> page;
    ASSERT_HRESULT(S_OK, other.As(&page));
    EXPECT_HRESULT(S_FALSE, page->Load(&empty, nullptr));
  }
  EXPECT_EQ(0, heap.Outstanding());
}

TEST_F(MemoryTest, AnObjectThatCannotBeMadeIsToldToTheHost) {
  void* object = this;
  {
    PATCH_IMPORT(heap, HeapAlloc, FailWith<void*>(nullptr, ERROR_NOT_ENOUGH_MEMORY), module.Handle());
    EXPECT_HRESULT(E_OUTOFMEMORY, module.GetClassObject(CLSID_AXNorvik, IID_IClassFactory, &object));
  }
  EXPECT_EQ(nullptr, object);
  const auto factory = module.Factory();
  object = this;
  {
    PATCH_IMPORT(heap, HeapAlloc, FailWith<void*>(nullptr, ERROR_NOT_ENOUGH_MEMORY), module.Handle());
    EXPECT_HRESULT(E_OUTOFMEMORY, factory->CreateInstance(nullptr, IID_IUnknown, &object));
  }
  EXPECT_EQ(nullptr, object);
}

TEST_F(MemoryTest, AnEngineThatCannotBeMadeLeavesAControlWithoutOne) {
  const auto factory = module.Factory();
  ComPtr<IAXNorvik> made;
  {
    PATCH_IMPORT(heap, HeapAlloc, FailCall<void*>(2, nullptr, ERROR_NOT_ENOUGH_MEMORY), module.Handle());
    ASSERT_HRESULT(S_OK, factory->CreateInstance(nullptr, IID_IAXNorvik, reinterpret_cast<void**>(made.GetAddressOf())));
  }
  const Lines created = {"ERROR 0x8007000e ActiveX control failed to create command executer."};
  EXPECT_EQ(created, Messages("ActiveX"));
  EXPECT_EQ("axNorvik", LastEntry("ActiveX").file);
  EXPECT_HRESULT(E_UNEXPECTED, made->Execute(Automation("http://127.0.0.1/").Get()));
  EXPECT_EQ("ERROR 0x8000ffff ActiveX control missing executer.", LastMessage("ActiveX"));
}

TEST_F(MemoryTest, WhereverTheCreationRunsOutOfMemoryNothingStaysBehind) {
  control.Reset();
  std::optional<HeapBalance> heap;
  HRESULT hr = E_UNEXPECTED;
  const auto create = [&] {
    ComPtr<IClassFactory> factory;
    hr = module.GetClassObject(CLSID_AXNorvik, IID_IClassFactory, reinterpret_cast<void**>(factory.GetAddressOf()));
    ComPtr<IUnknown> made;
    if (SUCCEEDED(hr))
      hr = factory->CreateInstance(nullptr, IID_IUnknown, reinterpret_cast<void**>(made.GetAddressOf()));
    EXPECT_EQ(SUCCEEDED(hr), made != nullptr);
  };
  std::set<HRESULT> results;
  const int failures = ForEachFailedAllocation(
      [&] { heap.emplace(module.Handle()); }, create,
      [&] {
    EXPECT_EQ(0, heap->Outstanding());
    EXPECT_HRESULT(S_OK, module.CanUnloadNow());
    results.insert(hr);
      },
      module.Handle());
  EXPECT_LT(10, failures);
  EXPECT_EQ((std::set<HRESULT>{S_OK, E_OUTOFMEMORY}), results);
  EXPECT_HRESULT(S_OK, hr);
  heap.reset();
}

class NoStringsTest : public ControlTest {
 protected:
  HRESULT WithoutStrings(const std::function<HRESULT()>& run) {
    PATCH_IMPORT(
        strings, SysAllocString, [](auto, auto...) -> BSTR { return nullptr; }, module.Handle());
    return run();
  }
};

TEST_F(NoStringsTest, TheControlIsNotMade) {
  const auto factory = module.Factory();
  void* object = this;
  EXPECT_HRESULT(E_OUTOFMEMORY, WithoutStrings([&] { return factory->CreateInstance(nullptr, IID_IUnknown, &object); }));
  EXPECT_EQ(nullptr, object);
}

TEST_F(NoStringsTest, TheManifestUrlIsNeitherHandedOutNorReplaced) {
  EXPECT_HRESULT(S_OK, control->put_ManifestURL(Automation("kept").Get()));
  BString url;
  EXPECT_HRESULT(E_OUTOFMEMORY, WithoutStrings([&] { return control->get_ManifestURL(url.Receive()); }));
  EXPECT_EQ("(null)", Narrow(url));
  EXPECT_HRESULT(E_OUTOFMEMORY, WithoutStrings([&] { return control->put_ManifestURL(Automation("new").Get()); }));
  EXPECT_HRESULT(S_OK, control->get_ManifestURL(url.Receive()));
  EXPECT_EQ("kept", Narrow(url));
}

TEST_F(NoStringsTest, ThePropertiesAreNotWrittenBack) {
  ComPtr<IPersistPropertyBag> page = As<IPersistPropertyBag>();
  FakeBag bag;
  EXPECT_HRESULT(E_OUTOFMEMORY, WithoutStrings([&] { return page->Save(&bag, TRUE, TRUE); }));
  EXPECT_EQ((Lines{"_cx 19 0", "_cy 19 0"}), bag.written);
}

TEST_F(NoStringsTest, APageParameterThatCannotBeKeptIsAFailureOfTheLoad) {
  ComPtr<IPersistPropertyBag> page = As<IPersistPropertyBag>();
  FakeBag bag;
  bag.properties[L"ManifestURL"] = Variant::Text("any");
  EXPECT_HRESULT(E_OUTOFMEMORY, WithoutStrings([&] { return page->Load(&bag, nullptr); }));
  EXPECT_EQ("ERROR 0x8007000e Failed to load ActiveX properties or HTML <PARAM> tags.", LastMessage("permit"));
}

}  // namespace
