#include "advice/Digest.h"

#include "common/Windows.h"

#include <wincrypt.h>

#include "common/Handles.h"

namespace {

constexpr DWORD kHashBytes = 32;

struct ProviderTraits {
  using Handle = HCRYPTPROV;
  static Handle Invalid() { return 0; }
  static bool Close(Handle provider) { return CryptReleaseContext(provider, 0) != FALSE; }
};
using Provider = UniqueHandle<ProviderTraits>;

struct HashTraits {
  using Handle = HCRYPTHASH;
  static Handle Invalid() { return 0; }
  static bool Close(Handle hash) { return CryptDestroyHash(hash) != FALSE; }
};
using Hash = UniqueHandle<HashTraits>;

std::string Hex(const BYTE* bytes, std::size_t count) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) {
    text += "0123456789abcdef"[bytes[i] >> 4];
    text += "0123456789abcdef"[bytes[i] & 0xF];
  }
  return text;
}

Provider OpenProvider() {
  HCRYPTPROV opened = 0;
  return Provider(CryptAcquireContextW(&opened, nullptr, nullptr, PROV_RSA_AES, CRYPT_VERIFYCONTEXT) ? opened : 0);
}

Hash CreateHash(const Provider& provider) {
  HCRYPTHASH created = 0;
  return Hash(CryptCreateHash(provider.Get(), CALG_SHA_256, 0, 0, &created) ? created : 0);
}

}  // namespace

std::string SHA256(const std::string& bytes) {
  const Provider provider = OpenProvider();
  if (!provider)
    return {};
  const Hash hash = CreateHash(provider);
  BYTE value[kHashBytes];
  DWORD size = kHashBytes;
  if (!hash ||
      !CryptHashData(hash.Get(), reinterpret_cast<const BYTE*>(bytes.data()), static_cast<DWORD>(bytes.size()), 0) ||
      !CryptGetHashParam(hash.Get(), HP_HASHVAL, value, &size, 0))
    return {};
  return Hex(value, size);
}
