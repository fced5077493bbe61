// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/web/engine/OwnAuthority.h"

#include <openssl/crypto.h>
#include <openssl/x509.h>
#include <openssl/x509_vfy.h>
#include <openssl/x509v3.h>

#include <memory>

namespace velmora {
namespace {

/// Who carries the turns needs OpenSSL to the very end of the process. Only its first initialisation counts,
/// which may be the one for a page.
[[maybe_unused]] const int keepOpenSsl = OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr);

template <auto release>
struct Release {
  template <typename Object>
  void operator()(Object *object) const {
    release(object);
  }
};

void freeCertificates(STACK_OF(X509) * list) { sk_X509_pop_free(list, X509_free); }

using Certificate = std::unique_ptr<X509, Release<X509_free>>;
using CertificateList = std::unique_ptr<STACK_OF(X509), Release<freeCertificates>>;
using Store = std::unique_ptr<X509_STORE, Release<X509_STORE_free>>;
using Context = std::unique_ptr<X509_STORE_CTX, Release<X509_STORE_CTX_free>>;

Certificate certificateOf(const QSslCertificate &certificate) {
  const QByteArray der = certificate.toDer();
  const auto *bytes = reinterpret_cast<const unsigned char *>(der.constData());
  return Certificate(d2i_X509(nullptr, &bytes, der.size()));
}

}  // namespace

bool isOfOwnAuthority(const QString &roots, const QList<QSslCertificate> &chain, const QString &host) {
  if (roots.isEmpty() || chain.isEmpty() || host.isEmpty()) return false;
  const Store store(X509_STORE_new());
  if (!store || X509_STORE_load_file(store.get(), roots.toUtf8().constData()) != 1) return false;
  const Certificate server = certificateOf(chain.front());
  const CertificateList others(sk_X509_new_null());
  for (const QSslCertificate &certificate : chain.mid(1)) {
    Certificate other = certificateOf(certificate);
    if (other && sk_X509_push(others.get(), other.get()) > 0) (void)other.release();
  }
  const Context context(X509_STORE_CTX_new());
  if (!server || !context ||
      X509_STORE_CTX_init(context.get(), store.get(), server.get(), others.get()) != 1) {
    return false;
  }
  X509_VERIFY_PARAM *wanted = X509_STORE_CTX_get0_param(context.get());
  const QByteArray name = host.toUtf8();
  const bool named = X509_VERIFY_PARAM_set1_ip_asc(wanted, name.constData()) == 1 ||
                     X509_VERIFY_PARAM_set1_host(wanted, name.constData(), 0) == 1;
  return named && X509_STORE_CTX_set_purpose(context.get(), X509_PURPOSE_SSL_SERVER) == 1 &&
         X509_verify_cert(context.get()) == 1;
}

}  // namespace velmora
