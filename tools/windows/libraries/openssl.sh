# What the server's client library protects its connections with; inside that library, not for itself. Nothing is ever
# loaded by name, and the place where it looks for settings is one that only administrators may write to.
source_name=openssl

build() {
  local off=() feature
  for feature in shared module engine dso legacy tests autoload-config ui-console cms ts ct srp psk dtls ocsp comp ssl3 \
    weak-ssl-ciphers idea seed camellia aria bf cast rc2 rc4 rmd160 sm2 sm3 sm4 whirlpool mdc2 md4 siphash blake2 ec2m gost \
    scrypt cmp; do
    off+=("no-$feature")
  done
  ./Configure mingw64 --cross-compile-prefix="$host-" CC=gcc-posix --prefix=/openssl --openssldir=/openssl --libdir=lib \
    "${off[@]}" -D_WIN32_WINNT=0x0A00
  make -j "$jobs" build_libs OPENSSLDIR='C:/Program Files/Common Files/SSL' ENGINESDIR=none MODULESDIR=none
  cp libcrypto.a libssl.a "$prefix/lib/"
  mkdir -p "$prefix/include/openssl"
  cp include/openssl/*.h "$prefix/include/openssl/"
}
