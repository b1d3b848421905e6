#pragma once

#include "common/Windows.h"

#include <string>

// Who may change what lies on a disk, by the access lists of the file system.

// The first account, as text ("S-1-1-0"), that an access list lets write although it is neither an administrator's nor the
// system's; empty when there is none. Without an access list that is everyone.
//
// To write is to change or append, to make or delete something in a folder, and to change the access list or the owner; an
// owner may always change the access list. A right counts unless it was denied to the same account, or to everyone, before.
// What a folder only hands on to what is made in it does not count. Administrators are the group, the accounts and groups of
// a domain that are administrators by their number, and the caller when a member of the group; any other account that a list
// names for itself counts as an ordinary one, whatever groups it is in.
std::wstring WriterByAccessList(ACL* accessList, PSID owner);

// The same of a file or folder or, where that is missing, of the nearest folder above it that is there, and in which it
// could be made: the account's name as users know it, in UTF-8. Empty when the access list cannot be read, on a server, and
// for a path without a drive. A drive alone is its root.
std::string WriterOfPath(const std::wstring& path);
