#include "tests/support/TestCertificate.h"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <functional>
#include <memory>
#include <stdexcept>

namespace tesserine::test {
namespace {

template <class Handle, void (*release)(Handle*)>
struct Releases {
    void operator()(Handle* handle) const { release(handle); }
};
using Key = std::unique_ptr<EVP_PKEY, Releases<EVP_PKEY, EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Releases<X509, X509_free>>;
using Text = std::unique_ptr<BIO, Releases<BIO, BIO_free_all>>;

void addExtension(X509* certificate, int kind, const std::string& value) {
    X509V3_CTX context;
    X509V3_set_ctx(&context, certificate, certificate, nullptr, nullptr, 0);
    X509_EXTENSION* const extension = X509V3_EXT_conf_nid(nullptr, &context, kind, value.c_str());
    if (extension == nullptr) throw std::runtime_error("no such extension: " + value);
    X509_add_ext(certificate, extension, -1);
    X509_EXTENSION_free(extension);
}

std::string written(const std::function<int(BIO*)>& write) {
    const Text text(BIO_new(BIO_s_mem()));
    if (write(text.get()) != 1) throw std::runtime_error("PEM could not be written");
    char* bytes = nullptr;
    const long length = BIO_get_mem_data(text.get(), &bytes);
    return {bytes, static_cast<std::size_t>(length)};
}

}  // namespace

TestCertificate TestCertificate::make(const Options& options) {
    const Key key(EVP_EC_gen("P-256"));
    const Certificate certificate(X509_new());
    X509* const x509 = certificate.get();
    X509_set_version(x509, 2);  // the third
    ASN1_INTEGER_set(X509_get_serialNumber(x509), 1);
    const std::chrono::seconds end = options.validFor;
    const std::chrono::seconds begin = end - std::chrono::hours(48);
    X509_gmtime_adj(X509_getm_notBefore(x509), begin.count());
    X509_gmtime_adj(X509_getm_notAfter(x509), end.count());
    X509_NAME* const name = X509_get_subject_name(x509);
    const auto* const common = reinterpret_cast<const unsigned char*>("A test");
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, common, -1, -1, 0);
    X509_set_issuer_name(x509, name);
    X509_set_pubkey(x509, key.get());
    addExtension(x509, NID_basic_constraints, "critical,CA:TRUE");
    addExtension(x509, NID_subject_alt_name, options.names);
    if (X509_sign(x509, key.get(), EVP_sha256()) == 0) throw std::runtime_error("not signed");
    return {
        .certificate = written([&](BIO* text) { return PEM_write_bio_X509(text, x509); }),
        .key = written([&](BIO* text) {
            return PEM_write_bio_PrivateKey(text, key.get(), nullptr, nullptr, 0, nullptr, nullptr);
        })};
}

}  // namespace tesserine::test
