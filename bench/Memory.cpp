#include "common/Windows.h"

#include <psapi.h>
#include <winternl.h>

#include <vector>

#include "Host.h"
#include "Scenarios.h"
#include "common/Handles.h"

namespace {

// The answer to the system's question for all open handles (SYSTEM_HANDLE_INFORMATION_EX; no header of the tool chain has
// it).
struct OpenHandle {
  void* object;
  ULONG_PTR processId;
  HANDLE handle;
  ULONG access;
  USHORT creatorBackTraceIndex;
  USHORT objectTypeIndex;
  ULONG attributes;
  ULONG reserved;
};
struct OpenHandles {
  ULONG_PTR count;
  ULONG_PTR reserved;
  OpenHandle handles[1];
};
constexpr auto kSystemExtendedHandleInformation = static_cast<SYSTEM_INFORMATION_CLASS>(64);
constexpr NTSTATUS kInfoLengthMismatch = static_cast<NTSTATUS>(0xC0000004);

std::vector<ULONG_PTR> ListOpenHandles() {
  std::vector<ULONG_PTR> list(1 << 16);
  NTSTATUS status = kInfoLengthMismatch;
  while (status == kInfoLengthMismatch) {
    list.resize(list.size() * 2);
    ULONG size = 0;
    status = NtQuerySystemInformation(
        kSystemExtendedHandleInformation, list.data(), static_cast<ULONG>(list.size() * sizeof(ULONG_PTR)), &size);
  }
  Require(status == 0, "the handles cannot be listed");
  return list;
}

// GetProcessHandleCount would be shorter, but Wine answers it with zero, and the list of processes with the room for
// handles.
ULONG HandleCount() {
  const std::vector<ULONG_PTR> list = ListOpenHandles();
  const auto* const all = reinterpret_cast<const OpenHandles*>(list.data());
  ULONG count = 0;
  for (ULONG_PTR i = 0; i < all->count; ++i)
    count += all->handles[i].processId == GetCurrentProcessId() ? 1 : 0;
  return count;
}

// A count that would not notice a handle that stays open says nothing.
void RequireThatHandlesCount() {
  const ULONG before = HandleCount();
  const FileHandle file(CreateFileA("NUL", GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  Require(file && HandleCount() == before + 1, "the count of handles does not count them");
}

}  // namespace

void MeasureMemory(const Arguments& arguments) {
  Host host;
  host.Permit().URL(arguments[0]);
  host.Run(host.WriteManifest(1, arguments[0]));
  PROCESS_MEMORY_COUNTERS counters = {};
  counters.cb = sizeof(counters);
  Require(GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters)), "the memory cannot be measured");
  Report("working set", static_cast<double>(counters.PeakWorkingSetSize));
  Report("pagefile", static_cast<double>(counters.PeakPagefileUsage));
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  Require(GetFileAttributesExA(host.Destination(0).c_str(), GetFileExInfoStandard, &data) &&
              data.nFileSizeLow == std::stoul(arguments[1]),
          "the file did not arrive whole");
}

void MeasureHandles(const Arguments& arguments) {
  RequireThatHandlesCount();
  Host host;
  WriteWholeFile(host.Folder().File("0.bin"), "content");
  const std::string manifest = host.WriteManifest(1, host.Folder().Path() + "\\");
  Report("0", HandleCount());
  host.Run(manifest);
  Report("1", HandleCount());
  const int count = std::stoi(arguments[0]);
  for (int i = 1; i < count; ++i)
    host.Run(manifest);
  Report(arguments[0], HandleCount());
}
