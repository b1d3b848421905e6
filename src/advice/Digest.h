#pragma once

#include <string>

// The SHA-256 hash of the bytes in hexadecimal digits; empty when the system cannot compute it.
std::string SHA256(const std::string& bytes);
