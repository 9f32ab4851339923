#!/usr/bin/env bash
# Whether a bundle can leave this Mac: kiem-goi.sh <bundle> [oldest macOS]
# It carries every library that is not the system's, is signed with the hardened runtime and says what it must; with a second argument,
# nothing in it asks for a newer macOS than that.
set -euo pipefail

goi=$1
cu=${2:-}
hong=0
sai() {
    printf '✗ %s\n' "$*" >&2
    hong=1
}

chuongTrinh=$goi/Contents/MacOS/Tovira
cac=("$chuongTrinh")
for tep in "$goi"/Contents/Frameworks/*.dylib; do
    [ ! -e "$tep" ] || cac+=("$tep")
done

for tep in "${cac[@]}"; do
    # The first line of otool names the file.
    while read -r thuVien _; do
        case $thuVien in
            /usr/lib/* | /System/*) ;;
            @rpath/*) [ -e "$goi/Contents/Frameworks/${thuVien#@rpath/}" ] || sai "$tep: $thuVien is not in the bundle" ;;
            *) sai "$tep: loads $thuVien from outside" ;;
        esac
    done < <(otool -L "$tep" | tail -n +2)
    while read -r _ cho _; do
        [ "$cho" = @executable_path/../Frameworks ] || sai "$tep: looks for libraries in $cho"
    done < <(otool -l "$tep" | grep -A2 LC_RPATH | grep ' path ' || true)
    [ "$(lipo -archs "$tep")" = arm64 ] || sai "$tep: not for arm64 alone"
    can=$(vtool -show-build "$tep" | awk '$1 == "minos" { print $2 }')
    [ -z "$cu" ] || [ "$(printf '%s\n' "$can" "$cu" | sort -t. -k1,1n -k2,2n | tail -1)" = "$cu" ] || sai "$tep: needs macOS $can"
    codesign --verify --strict "$tep" || sai "$tep: not signed"
done

codesign --verify --deep --strict "$goi" || sai "the bundle's signature does not hold"
chuKy=$(codesign --display --verbose=2 --entitlements - --xml "$goi" 2>&1 || true)
[[ $chuKy == *runtime* ]] || sai "not signed for the hardened runtime"
for quyen in camera audio-input; do
    [[ $chuKy == *com.apple.security.device.$quyen* ]] || sai "the entitlement $quyen is missing"
done

plutil -lint -s "$goi/Contents/Info.plist" || sai "Info.plist"
doc() {
    local ra
    if ra=$(/usr/libexec/PlistBuddy -c "Print :$1" "$goi/Contents/Info.plist" 2>/dev/null); then printf '%s' "$ra"; fi
}
[ "$(doc LSMinimumSystemVersion)" = 13.0 ] || sai "LSMinimumSystemVersion is not 13.0"
[ -z "$(doc LSUIElement)" ] || sai "LSUIElement is set"
[ "$(doc NSAppTransportSecurity:NSAllowsLocalNetworking)" = true ] || sai "NSAllowsLocalNetworking is not set"
for khoa in CFBundleIdentifier CFBundleShortVersionString NSCameraUsageDescription NSMicrophoneUsageDescription NSLocalNetworkUsageDescription; do
    [ -n "$(doc "$khoa")" ] || sai "$khoa is missing"
done
for tep in Tovira.icns giao-dien/app.html giao-dien/crypto.js giao-dien/i18n/vi.json; do
    [ -s "$goi/Contents/Resources/$tep" ] || sai "Resources/$tep is missing"
done

[ $hong -eq 0 ] && printf '✓ %s\n' "$goi"
exit $hong
