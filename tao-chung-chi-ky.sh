#!/usr/bin/env bash
# Makes a code-signing certificate of your own in the login keychain, so that the permissions that macOS has granted
# to Tovira outlive the next build. Once is enough; another run changes nothing.
set -euo pipefail
umask 077

ten="Tovira Local Signing" # cmake/dong-goi-macos.cmake looks for it
noi() { printf '• %s\n' "$*"; }

[ "$(uname -s)" = Darwin ] || { echo "Only macOS builds are signed." >&2; exit 1; }

# Any identity of that name; with -v only one that the system trusts for signing code.
coDanhTinh() { [[ $(security find-identity "$@" -p codesigning) == *"\"$ten\""* ]]; }

if coDanhTinh -v; then
    noi "The certificate \"$ten\" is there already."
    exit
fi

thuMuc=$(mktemp -d)
trap 'rm -rf "$thuMuc"' EXIT
chuoiKhoa=$(security login-keychain | sed 's/^ *"//; s/" *$//')

if ! coDanhTinh; then
    noi "Making the certificate \"$ten\""
    cat >"$thuMuc/cau-hinh" <<HET
[req]
prompt = no
distinguished_name = ten
x509_extensions = muc_dich
[ten]
CN = $ten
[muc_dich]
basicConstraints = critical, CA:false
keyUsage = critical, digitalSignature
extendedKeyUsage = critical, codeSigning
HET
    # The system's own openssl: the keychain cannot read the encryption that newer ones choose.
    /usr/bin/openssl rand -hex 24 >"$thuMuc/mat-khau"
    /usr/bin/openssl req -x509 -newkey rsa:2048 -nodes -sha256 -days 3650 -config "$thuMuc/cau-hinh" \
        -keyout "$thuMuc/khoa.pem" -out "$thuMuc/chung-chi.pem" 2>/dev/null
    /usr/bin/openssl pkcs12 -export -name "$ten" -inkey "$thuMuc/khoa.pem" -in "$thuMuc/chung-chi.pem" \
        -passout "file:$thuMuc/mat-khau" -out "$thuMuc/ca-hai.p12"
    security import "$thuMuc/ca-hai.p12" -k "$chuoiKhoa" -P "$(cat "$thuMuc/mat-khau")" -T /usr/bin/codesign >/dev/null
fi

noi "Trusting it for signing code: macOS asks for your password"
security find-certificate -c "$ten" -p "$chuoiKhoa" >"$thuMuc/chung-chi.pem"
security add-trusted-cert -r trustRoot -p codeSign -k "$chuoiKhoa" "$thuMuc/chung-chi.pem"
coDanhTinh -v || { echo "The system does not accept the certificate; see it in Keychain Access." >&2; exit 1; }
noi "Done. The next build is signed with it; when macOS asks whether codesign may use the key, choose \"Always Allow\"."
