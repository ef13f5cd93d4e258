#!/usr/bin/env bash
# Builds the Debian package from a configured, built tree, unpacks it into an empty root and
# runs the programs from there: what a packager and a user of a fresh system get.
# Usage: check-package.sh BUILD_DIR
set -euo pipefail
build="$1"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

(cd "$build" && cpack -G DEB -B "$work/out" >"$work/cpack.log" 2>&1) || { cat "$work/cpack.log"; exit 1; }
deb="$(ls "$work"/out/*.deb)"
echo "package: $(basename "$deb")"

fields="$(dpkg-deb -f "$deb" Package Version Architecture Depends)"
echo "$fields"
grep -q '^Depends:.*libqt6core6' <<<"$fields" || { echo "FAIL: Qt is not among the dependencies"; exit 1; }
grep -q '^Depends:.*libsodium' <<<"$fields" || { echo "FAIL: libsodium is not among the dependencies"; exit 1; }
grep -q '^Depends:.*dbus' <<<"$fields" || { echo "FAIL: the session bus is not among the dependencies"; exit 1; }

root="$work/root"
mkdir -p "$root"
dpkg-deb -x "$deb" "$root"
for f in usr/bin/tlxctrl usr/bin/tlxctl usr/bin/tlx-display usr/bin/tlx-mkdeck usr/bin/tlx-basesim \
         usr/share/dbus-1/services/tallix_control.tallix.service \
         usr/share/applications/org.tallix.Controller.desktop \
         usr/share/metainfo/org.tallix.Controller.metainfo.xml \
         usr/share/icons/hicolor/scalable/apps/org.tallix.Controller.svg \
         usr/share/tallix/examples/sim/demo.ini; do
    [ -e "$root/$f" ] || { echo "FAIL: $f is not in the package"; exit 1; }
done
# Nothing of the build or test trees travels with it.
if dpkg-deb -c "$deb" | grep -Eq 'tests_|tlx-load|/build/'; then echo "FAIL: test or build files packaged"; exit 1; fi
# The service file starts the installed program, not the build tree's.
grep -qx 'Exec="/usr/bin/tlxctrl" --headless --automation' "$root/usr/share/dbus-1/services/tallix_control.tallix.service" ||
    { echo "FAIL: service file:"; cat "$root/usr/share/dbus-1/services/tallix_control.tallix.service"; exit 1; }

for p in tlxctrl tlxctl tlx-display tlx-mkdeck tlx-basesim; do
    out="$("$root/usr/bin/$p" --version)"
    echo "$out"
    [[ "$out" == "$p "[0-9]* ]] || { echo "FAIL: $p --version said: $out"; exit 1; }
done

if command -v desktop-file-validate >/dev/null; then
    desktop-file-validate "$root/usr/share/applications/org.tallix.Controller.desktop"
fi
if command -v appstreamcli >/dev/null; then
    appstreamcli validate --no-net --pedantic "$root/usr/share/metainfo/org.tallix.Controller.metainfo.xml" ||
        appstreamcli validate --no-net "$root/usr/share/metainfo/org.tallix.Controller.metainfo.xml"
fi
echo "package OK"
