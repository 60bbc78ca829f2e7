#!/usr/bin/env bash
# check.sh BUILD CPACK: makes the Debian package of a build and looks into it; then starts the program from it, which must
# keep its files in the user's own directories and end in good order. With root's rights it is installed for that and
# removed again, unless a Tamarack is installed here already; otherwise it is only unpacked.
set -euo pipefail
build="$1"
cpack="$2"
packaging="$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/../../packaging"
folder="$(mktemp -d)"
installed=
cleanup() {
    [[ -z $installed ]] || dpkg --purge tamarack >/dev/null
    rm -rf "$folder"
}
trap cleanup EXIT

fail() {
    echo "$*" >&2
    exit 1
}

# One key is newer than the validator.
if desktop-file-validate "$packaging/tamarack.desktop" | grep -v SingleMainWindow; then exit 1; fi
# One variable of the build has the address of the home page, and nothing else knows it.
homepage="$(sed -n 's/^TAMARACK_HOMEPAGE:STRING=//p' "$build/CMakeCache.txt")"
! grep -rF tamarack.example.org "$packaging"/{,../src,../docs/help,../demo} || fail "The address stands there too."

"$cpack" --config "$build/CPackConfig.cmake" -B "$folder/packages" >"$folder/log" 2>&1 || { cat "$folder/log"; exit 1; }
package="$(echo "$folder"/packages/*.deb)"
dpkg-deb --fsys-tarfile "$package" | tar -t | sort >"$folder/contents"
for file in bin/tamarack libexec/tamarack/tamarack-picture share/tamarack/Tamarack.hlp \
    share/tamarack/help/find-a-server.html share/applications/tamarack.desktop share/doc/tamarack/copyright \
    share/icons/hicolor/scalable/apps/tamarack.svg share/man/man1/tamarack.1.gz \
    share/metainfo/org.tamarack.Tamarack.metainfo.xml; do
    grep -qx "./usr/$file" "$folder/contents" || fail "The package lacks $file."
done
depends="$(dpkg-deb -f "$package" Depends)"
for library in libqt6widgets6 libwmf libemf2svg libseccomp2 qt6-image-formats-plugins libssl3 ca-certificates; do
    [[ $depends == *$library* ]] || fail "The package does not depend on $library: $depends"
done
[[ "$(dpkg-deb -f "$package" Version)" == 2.7.0.24 ]] || fail "The package has another version."
dpkg-deb -x "$package" "$folder/root"
# Built so that a fault in memory ends them. The sanitizers' build, which finds such faults by itself, is not.
if ! grep -q '^CMAKE_CXX_FLAGS:.*-fsanitize' "$build/CMakeCache.txt"; then
    for binary in "$folder"/root/usr/bin/tamarack "$folder"/root/usr/libexec/tamarack/*; do
        read_elf="$(readelf -dlW "$binary"; nm -D "$binary")"
        for mark in 'Flags: NOW PIE' GNU_RELRO __stack_chk_fail __glibcxx_assert_fail; do
            [[ $read_elf == *"$mark"* ]] || fail "$binary is not hardened: it lacks $mark."
        done
        [[ $binary != */bin/tamarack || $read_elf == *_chk@GLIBC* ]] || fail "$binary is not hardened: it checks no calls."
    done
    # The helper makes no call that could be checked as it runs; it was compiled for that all the same.
    ! grep '"command":.*/src/' "$build/compile_commands.json" | grep -v -- '-D_FORTIFY_SOURCE=2' || fail "That is not hardened."
fi
# The program itself has nothing that reads pictures: that is for its helper.
symbols="$(nm -DC --undefined-only "$folder/root/usr/bin/tamarack")"
[[ $symbols == *QImage::* ]] || fail "The program's symbols cannot be seen."
! grep -E 'QImageReader|QImage::(load|fromData)|QPixmap::load|wmf_|emf2svg' <<<"$symbols" || fail "The program reads pictures itself."
shared="$folder/root/usr/share"
metainfo="$shared/metainfo/org.tamarack.Tamarack.metainfo.xml"
appstreamcli validate --no-net "$metainfo" >"$folder/log" || { cat "$folder/log"; exit 1; }
[[ -n $homepage && "$(dpkg-deb -f "$package" Homepage)" == "$homepage" ]] || fail "The package has another home page."
grep -qF ">$homepage<" "$metainfo" || fail "The metainfo has another home page."
gzip -dc "$shared/man/man1/tamarack.1.gz" | grep -qF "$homepage" || fail "The man page has another home page."
grep -qF -- "-- $homepage" "$folder/root/usr/bin/tamarack" || fail "The title bar has another home page."

if ((EUID == 0)) && ! dpkg-query -W tamarack >/dev/null 2>&1 && dpkg -i "$package" >"$folder/log" 2>&1; then
    installed=yes
    program=/usr/bin/tamarack
else
    # Perhaps half of it, where something that it depends on is missing.
    ((EUID != 0)) || dpkg --purge tamarack >/dev/null 2>&1 || true
    program="$folder/root/usr/bin/tamarack"
fi
echo "Trying ${installed:+the installed }$program"

export HOME="$folder/home" XDG_CONFIG_HOME="$folder/home/.config" XDG_DATA_HOME="$folder/home/.local/share"
mkdir -p "$XDG_CONFIG_HOME/Tamarack"
printf '[Servers]\nnews.example.com=1\n' >"$XDG_CONFIG_HOME/Tamarack/Tamarack.ini"
mkdir -p "$XDG_DATA_HOME/Tamarack"
printf '""\r\n' >"$XDG_DATA_HOME/Tamarack/!@#!.news.example.com"
"$program" 2>"$folder/errors" &
process=$!
# Behind its banner it shows itself; then it can be ended.
sleep 4
kill -TERM "$process" 2>/dev/null || fail "The program has ended by itself: $(cat "$folder/errors")"
wait "$process" || fail "The program ended with $?: $(cat "$folder/errors")"
grep -q '^Default=news.example.com' "$XDG_CONFIG_HOME/Tamarack/Tamarack.ini" || fail "The settings were not kept."
[[ -e "$XDG_DATA_HOME/Tamarack/#!@!.news.example.com" ]] || fail "The selected groups were not kept."
[[ -z "$installed" ]] || { dpkg --purge tamarack >/dev/null; installed=; [[ ! -e $program ]] || fail "It is not gone."; }
