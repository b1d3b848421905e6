#pragma once

#include "common/Windows.h"

#include <map>
#include <string>
#include <vector>

using Files = std::map<std::string, std::string>;  // the content by the name below a folder
using Texts = std::vector<std::string>;

// How a host uses the module.
enum class Use { CreateOnly, Execute, ExecuteNavigate, Page };

// What a host does, and what comes of it when nothing fails. In the texts $D stands for the destination folder, $S for the
// folder of local files, $W for the web server (all without a trailing separator) and $M for the module.
struct Scenario {
  const char* name;
  Use use = Use::Execute;
  std::string commands = "";                    // of the manifest
  bool isManifestOnWeb = false;                 // else it is a local file
  std::string manifest = "";                    // in place of one with the commands
  std::string permit = "";                      // in place of a permission file that permits all of the above
  Files existing = {};                          // in the destination folder before
  bool isProtected = false;                     // those are read-only
  Files left = {};                              // in the destination folder afterwards
  std::vector<HRESULT> results = {S_OK, S_OK};  // of the creation and of each later call
  Texts host = {};                              // what the host was asked for: "started ...", "navigate ..."
};

const std::vector<Scenario>& AllScenarios();

// The contents of the files that the scenarios copy. The long one takes three reads, the last of which is a short one.
const std::string& LongContent();
constexpr char kShortContent[] = "a short file";
constexpr char kOldContent[] = "what was there before";

// The name under which the long file shows when it was copied into the Internet cache.
constexpr char kCachedFile[] = "(Internet cache)";

// What one use did.
struct Effects {
  std::vector<HRESULT> results;
  Files left;
  Texts host;

  // The copies of the permission file and of the manifest in the Internet cache, by "permit copy" and "manifest copy", and
  // what is there of the files that the cache gave and that nobody committed.
  Files copies = {};
  Texts uncommitted = {};

  // Copies aside: a run is the same with another one.
  bool operator==(const Effects& other) const {
    return results == other.results && left == other.left && host == other.host && uncommitted == other.uncommitted;
  }
};

// For messages: one line.
std::string Describe(const Effects& effects);

// What makes one use another one, byte for byte, in one line; empty when nothing does. What `expected` says nothing of, its
// copies, is not compared.
std::string Difference(const Effects& expected, const Effects& effects);
