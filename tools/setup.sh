# What the top-level scripts share: the Debian packages by purpose, how they get onto the machine, and the build. For
# sourcing, with `root` set to the top of the tree.

buildPackages=(g++ cmake ninja-build ccache qt6-base-dev qt6-svg-dev libdeflate-dev libicu-dev pkg-config libwmf-dev libemf2svg-dev libseccomp-dev libfontconfig-dev libssl-dev)
# What the program needs beside the libraries that it is linked with.
windowPackages=(fonts-dejavu-core qt6-image-formats-plugins ca-certificates)
testPackages=(libgtest-dev libgmock-dev clang-format-14 dpkg-dev file appstream desktop-file-utils
    xvfb openbox xdotool wmctrl x11-utils dbus-daemon at-spi2-core python3-dbus)
fuzzPackages=(clang-14 libclang-rt-14-dev)
benchPackages=(libbenchmark-dev libuu-dev)
newsServerPackages=(inn2)
# The news server demands something that sends mail; the smallest will do, but never in place of one that is there.
[[ -x /usr/sbin/sendmail ]] || newsServerPackages+=(msmtp-mta)

# Prints those of the named packages that are not fully installed.
missing_packages() {
    local package
    for package in "$@"; do
        dpkg-query -W -f='${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed || echo "$package"
    done
}

as_root() {
    if ((EUID == 0)); then "$@"; else sudo "$@"; fi
}

# Asks for a password only where there is somebody to answer.
can_become_root() {
    ((EUID == 0)) && return
    command -v sudo >/dev/null || return
    if [[ -t 0 ]]; then sudo -v; else sudo -n true 2>/dev/null; fi
}

# Installs what is missing of the named packages. Fails, having said what is missing, when this user may not or apt-get
# could not; touches neither the package lists nor the network when nothing is missing.
install_packages() {
    if ! command -v dpkg-query >/dev/null; then
        echo "Not a Debian system: taking it on trust that this is installed: $*" >&2
        return
    fi
    local missing
    mapfile -t missing < <(missing_packages "$@")
    ((${#missing[@]})) || return 0
    if ! can_become_root; then
        echo "These Debian packages are missing: ${missing[*]}" >&2
        echo "Installing them takes root or sudo, and neither is to be had. As root:" >&2
        echo "    apt-get install --no-install-recommends ${missing[*]}" >&2
        return 1
    fi
    echo "Installing ${missing[*]}" >&2
    # A source of packages that cannot be reached need not be the one that has these.
    as_root apt-get update -q >&2 || echo "Going on with the package lists as they are." >&2
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends \
        -o DPkg::Lock::Timeout=300 -o Dpkg::Use-Pty=0 "${missing[@]}" >&2
}

# The news server for the tests that talk to a real one. They start their own private instance, and the package's own
# service must never serve the whole network: where systemd runs it is masked, for good, as it would else start with the
# machine or with an upgrade. Elsewhere it is kept from starting while the package is installed.
install_news_server() {
    local missing
    mapfile -t missing < <(missing_packages "${newsServerPackages[@]}")
    ((${#missing[@]})) || return 0
    local policy=
    if can_become_root && [[ ! -e /lib/systemd/system/inn2.service ]]; then
        if [[ -d /run/systemd/system ]]; then
            [[ -e /etc/systemd/system/inn2.service ]] || as_root ln -s /dev/null /etc/systemd/system/inn2.service
        elif [[ ! -e /usr/sbin/policy-rc.d ]]; then
            policy=/usr/sbin/policy-rc.d
            printf '#!/bin/sh\nexit 101\n' | as_root tee "$policy" >/dev/null
            as_root chmod +x "$policy"
        fi
    fi
    # The policy goes again, however this ends.
    (
        [[ -z $policy ]] || trap 'as_root rm -f "$policy"' EXIT
        trap 'exit 1' INT TERM
        install_and_configure_news_server
    )
}

install_and_configure_news_server() {
    install_packages "${newsServerPackages[@]}" && return
    # The package does not configure itself, now or at an upgrade, on a machine whose name has no domain. Give it one, and
    # let it try again.
    [[ -f /etc/news/inn.conf ]] && can_become_root || return
    echo "Giving inn2 a domain, and configuring it once more" >&2
    as_root sed -i 's/^#*domain:.*/domain: news.test/' /etc/news/inn.conf
    as_root env DEBIAN_FRONTEND=noninteractive dpkg --configure -a >&2
}

# build_preset PRESET [TARGET...]: configures build/PRESET and builds the targets, or all there is.
build_preset() {
    local preset="$1"
    shift
    cmake -S "$root" --preset "$preset" >/dev/null
    cmake --build "$root/build/$preset" ${1:+--target "$@"}
}
