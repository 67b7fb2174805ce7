#!/bin/sh
# Builds the Debian package from a build tree into a scratch folder and checks that lintian
# passes it, that it holds what an installed program needs, that it depends on the Qt 6
# runtime, makes the shared profile folder, and that the programs in it run.
# Usage: check-package.sh BUILD_DIR VERSION DESKTOP_ID
set -eu
build=$1 version=$2 desktop_id=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

if ! cpack --config "$build/CPackConfig.cmake" -B "$work" >"$work/cpack.log" 2>&1; then
    cat "$work/cpack.log"
    exit 1
fi
deb=$(ls "$work"/kxcpl_*.deb)

[ "$(dpkg-deb -f "$deb" Package)" = kxcpl ] || fail "package name"
[ "$(dpkg-deb -f "$deb" Version)" = "$version" ] || fail "version is not $version"

dpkg-deb -c "$deb" | awk '{ print $6 }' >"$work/contents"
for file in usr/bin/kxcpl usr/bin/kxplate usr/share/kxcpl/PSND_XX.sts \
    usr/share/man/man1/kxcpl.1.gz usr/share/man/man1/kxplate.1.gz \
    usr/share/doc/kxcpl/copyright usr/share/doc/kxcpl/changelog.gz \
    usr/share/bash-completion/completions/kxcpl usr/share/bash-completion/completions/kxplate \
    usr/share/icons/hicolor/16x16/apps/kxcpl.png usr/share/icons/hicolor/32x32/apps/kxcpl.png \
    usr/share/icons/hicolor/48x48/apps/kxcpl.png usr/share/icons/hicolor/256x256/apps/kxcpl.png \
    "usr/share/applications/$desktop_id.desktop" "usr/share/metainfo/$desktop_id.metainfo.xml"; do
    grep -qx "\./$file" "$work/contents" || fail "missing $file"
done

depends=$(dpkg-deb -f "$deb" Depends)
for runtime in libqt6core6 libqt6gui6 libqt6widgets6 libqt6multimedia6 qt6-qpa-plugins; do
    echo "$depends" | grep -q "\b$runtime\b" || fail "no dependency on $runtime: $depends"
done

# Debian's own checks: no error and no warning (its note about running as root is not one).
if ! lintian --fail-on error,warning "$deb" >"$work/lintian.log" 2>&1; then
    fail "lintian: $(grep -v 'root privileges' "$work/lintian.log" | tr '\n' ' ')"
fi

dpkg-deb -e "$deb" "$work/control"
[ -x "$work/control/postinst" ] || fail "no executable postinst"
grep -q "/var/lib/kxcpl/Quentral/Plate Control Panel" "$work/control/postinst" 2>/dev/null ||
    fail "postinst does not make the shared profile folder"

dpkg-deb -x "$deb" "$work/root"
shown=$("$work/root/usr/bin/kxcpl" --version) || fail "kxcpl --version failed"
[ "$shown" = "kxcpl $version" ] || fail "kxcpl --version said '$shown'"
shown=$("$work/root/usr/bin/kxplate" --version) || fail "kxplate --version failed"
[ "$shown" = "kxplate $version" ] || fail "kxplate --version said '$shown'"

[ "$failures" -eq 0 ] && echo "$deb: complete"
exit "$failures"
