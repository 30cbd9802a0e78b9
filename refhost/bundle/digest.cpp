#include "bundle/digest.h"

#include <openssl/evp.h>

#include <array>
#include <stdexcept>

namespace qvhost::bundle {

struct Sha256::Impl {
    EVP_MD_CTX* context = EVP_MD_CTX_new();
    ~Impl() { EVP_MD_CTX_free(context); }
};

namespace {

void check(bool worked) {
    if (!worked) throw std::runtime_error("SHA-256 is not to be had from libcrypto");
}

}  // namespace

Sha256::Sha256() : impl_(std::make_unique<Impl>()) {
    check(impl_->context && EVP_DigestInit_ex(impl_->context, EVP_sha256(), nullptr) == 1);
}

Sha256::~Sha256() = default;

void Sha256::add(std::string_view bytes) {
    check(EVP_DigestUpdate(impl_->context, bytes.data(), bytes.size()) == 1);
}

std::string Sha256::hex() {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned size = 0;
    check(EVP_DigestFinal_ex(impl_->context, digest.data(), &size) == 1);
    std::string text;
    for (unsigned i = 0; i < size; ++i) {
        constexpr const char* kDigits = "0123456789abcdef";
        text += kDigits[digest[i] >> 4];
        text += kDigits[digest[i] & 15];
    }
    return text;
}

}  // namespace qvhost::bundle
