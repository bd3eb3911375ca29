#!/usr/bin/env bash
# Builds the Debian package from the build folder $1, unpacks it into a temporary root and
# checks it there: the distribution's validators, the maintainer scripts, every program's
# --help and --version, and the settings host run headless on the installed pane with the
# installed demo application, starting and stopping the helper for a private user whose
# log-in list and autostart entry are then what a real log-in would use.
set -uo pipefail

build=$(realpath "$1")
for tool in cpack dpkg-deb lintian desktop-file-validate appstreamcli python3; do
    if ! command -v "$tool" >/dev/null; then
        echo "SKIP: $tool is not installed (scripts/setup installs it)"
        exit 77
    fi
done

work=$(mktemp -d /tmp/package-test-XXXXXX)
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }
check() { local what=$1; shift; "$@" >"$work/last.log" 2>&1 || { fail "$what"; sed 's/^/    /' "$work/last.log"; }; }

# Every process whose program lies in the unpacked root, killed at the end whatever happened.
programs_in_root() {
    for exe in /proc/[0-9]*/exe; do
        case "$(readlink "$exe" 2>/dev/null)" in "$root"/*) pid=${exe#/proc/}; echo "${pid%/exe}" ;; esac
    done
}
cleanup() {
    [ -n "${root:-}" ] && for pid in $(programs_in_root); do kill -KILL "$pid" 2>/dev/null; done
    rm -rf "$work"
}
trap cleanup EXIT

echo "== building the package"
if ! cpack --config "$build/CPackConfig.cmake" -B "$work/out" >"$work/cpack.log" 2>&1; then
    cat "$work/cpack.log"
    echo "FAIL: cpack could not build the package"
    exit 1
fi
deb=$(ls "$work"/out/*.deb)
root="$work/root"
dpkg-deb -x "$deb" "$root"
usr="$root/usr"
pane="$usr/lib/spindeck/preference-panes/Vemora spindeck.prefPane"
app="$usr/lib/spindeck/application-bundles/Vemora spindeck.app"
helper_bundle="$app/Contents/MacOS/Vemora spindeck Helper.app"
helper="$helper_bundle/Contents/MacOS/Vemora spindeck Helper"
entry="$root/etc/xdg/autostart/com.vemora.spindeck.LoginLauncher.desktop"
desktop="$usr/share/applications/com.vemora.spindeck.Settings.desktop"

echo "== contents and control data"
for file in "$usr/bin/panehost" "$usr/bin/spindeckctl" "$usr/bin/vemora-login-launcher" "$pane/Contents/MacOS/KestrelConfig" \
    "$helper" "$entry" "$desktop" "$usr/share/icons/hicolor/scalable/apps/com.vemora.spindeck.Settings.svg" \
    "$usr/share/icons/hicolor/128x128/apps/com.vemora.spindeck.Settings.png" \
    "$usr/share/metainfo/com.vemora.spindeck.Settings.metainfo.xml" "$usr/share/doc/vemora-spindeck/copyright" \
    "$usr/share/man/man1/spindeckctl.1.gz"; do
    [ -e "$file" ] || fail "the package lacks ${file#"$root"}"
done
[ -e "$pane/Contents/MacOS/Vemora spindeck.app/Contents/Info.plist" ] ||
    fail "the pane's link does not reach the installed configuration application"
depends=$(dpkg-deb -f "$deb" Depends)
[[ "$depends" == *libqt6widgets6* && "$depends" == *libc6* ]] || fail "dependencies not computed from the libraries: '$depends'"
dpkg-deb -e "$deb" "$work/control"
grep -qx "/etc/xdg/autostart/com.vemora.spindeck.LoginLauncher.desktop" "$work/control/conffiles" ||
    fail "the autostart entry is not a conffile"

echo "== validators"
check "desktop-file-validate" desktop-file-validate "$desktop" "$entry"
check "appstreamcli validate" appstreamcli validate --no-net "$usr/share/metainfo/com.vemora.spindeck.Settings.metainfo.xml"
check "lintian" lintian --fail-on error "$deb"

echo "== --help and --version"
for program in "$usr/bin/panehost" "$usr/bin/spindeckctl" "$usr/bin/vemora-login-launcher" "$helper" \
    "$app/Contents/MacOS/Vemora spindeck"; do
    name=$(basename "$program")
    check "$name --help" "$program" --help
    [ "$("$program" --version 2>&1)" = "$name $(dpkg-deb -f "$deb" Version)" ] || fail "$name --version"
done

echo "== the settings host on the installed pane, for a private user"
home="$work/home"
mkdir -p "$home/.config" "$work/runtime" && chmod 700 "$work/runtime"
as_user() {
    env -u LANGUAGE -u LC_ALL -u LC_MESSAGES HOME="$home" XDG_CONFIG_HOME="$home/.config" XDG_RUNTIME_DIR="$work/runtime" \
        XDG_DATA_HOME="$home/.local/share" LANG=C.UTF-8 PATH="$usr/bin:$PATH" QT_QPA_PLATFORM=offscreen "$@"
}
helper_runs() { for pid in $(programs_in_root); do [ "$(readlink "/proc/$pid/exe")" = "$helper" ] && return 0; done; return 1; }
# The log-in list's paths, one a line, read as any property-list reader would.
login_items() {
    python3 -c 'import plistlib,sys; d=plistlib.load(open(sys.argv[1],"rb")); [print(i["Path"]) for i in d.get("AutoLaunchedApplicationDictionary",[])]' \
        "$home/.config/preferences/loginwindow.plist" 2>/dev/null
}

as_user panehost --headless --json --pane "$pane" --click --print >"$work/start.json" 2>"$work/start.err" ||
    { fail "the host could not start the helper"; cat "$work/start.err"; }
tail -1 "$work/start.json" | grep -q '"button":"Stop .*"status":"Vemora spindeck is enabled' || fail "the pane does not offer Stop after Start: $(cat "$work/start.json")"
helper_runs || fail "the installed helper does not run after Start"
[ "$(login_items)" = "$helper_bundle" ] || fail "the log-in list is not the installed helper: '$(login_items)'"
as_user spindeckctl status >/dev/null || fail "spindeckctl does not find the helper of its own installation"

# Log out (the helper ends) and in again: the desktop runs the autostart entry's command.
for pid in $(programs_in_root); do kill -TERM "$pid"; done
for _ in $(seq 50); do helper_runs || break; sleep 0.1; done
exec_line=$(sed -n 's/^Exec=//p' "$entry")
as_user sh -c "$exec_line" || fail "the autostart entry's command failed"
for _ in $(seq 50); do helper_runs && break; sleep 0.1; done
helper_runs || fail "the helper did not come back at log-in"

as_user panehost --headless --json --pane "$pane" --click --wait 7 --print >"$work/stop.json" 2>"$work/stop.err" ||
    { fail "the host could not stop the helper"; cat "$work/stop.err"; }
tail -1 "$work/stop.json" | grep -q '"button":"Start .*"status":"Vemora spindeck is disabled' || fail "the pane does not offer Start after Stop: $(tail -1 "$work/stop.json")"
helper_runs && fail "the helper still runs after Stop"
[ -z "$(login_items)" ] || fail "the log-in list still holds '$(login_items)' after Stop"

echo "== maintainer scripts"
# The scripts as packaged, aimed at this root instead of the system's: a copy of a long-running
# program stands in for the launcher, and another copy elsewhere must be left alone.
mkdir -p "$work/elsewhere" "$root/etc-test"
cp /bin/sleep "$usr/bin/vemora-login-launcher" && cp /bin/sleep "$work/elsewhere/vemora-login-launcher"
"$usr/bin/vemora-login-launcher" 60 & ours=$!
"$work/elsewhere/vemora-login-launcher" 60 & theirs=$!
sed "s|^launcher=.*|launcher=\"$usr/bin/vemora-login-launcher\"|" "$work/control/prerm" >"$work/prerm"
sed "s|^entry=.*|entry=\"$entry\"|" "$work/control/postrm" >"$work/postrm"
touch "$entry.dpkg-old"
check "prerm remove" sh "$work/prerm" remove
check "postrm remove" sh "$work/postrm" remove
wait "$ours"; [ $? -eq 143 ] || fail "prerm did not end the running launcher"
kill -0 "$theirs" 2>/dev/null || fail "prerm signalled a program that is not the installed launcher"
kill "$theirs"
[ -e "$entry" ] || [ -e "$entry.dpkg-old" ] && fail "postrm left the autostart entry behind on remove"
sh "$work/prerm" frobnicate 2>/dev/null && fail "prerm accepted an unknown argument"

[ "$failures" -eq 0 ] && echo "PASS" || echo "$failures check(s) failed"
[ "$failures" -eq 0 ]
