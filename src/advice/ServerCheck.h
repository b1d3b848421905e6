#pragma once

#include "common/Windows.h"

#include <string>

#include "advice/DoctorCheck.h"

// How the system reaches the web for this user.
struct ProxySettings {
  bool isKnown = false;
  bool isSoughtAutomatically = false;
  std::wstring script;   // the address of the script that chooses; empty without one
  std::wstring servers;  // "proxy:8080" or "http=one:80;https=two:443"; empty for none
  std::wstring bypass;   // the hosts that are asked directly
};

ProxySettings ReadProxySettings();
DoctorCheck CheckProxy(const ProxySettings& settings);

// Asks the server of `url` for it, once, exactly as the module does, and reads nothing of the body. Skipped for an empty
// one.
DoctorCheck CheckServer(const std::wstring& url);

// What a failed request means and what to do about it, as a sentence or two.
std::string WordsForRequest(HRESULT hr);
