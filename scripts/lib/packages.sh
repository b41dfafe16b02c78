# Sourced by the scripts: Debian packages that they need, and their installing.

# What each job needs. ca-certificates: without it no TLS certificate can be verified.
packages_build=(
    g++ cmake ninja-build pkg-config ca-certificates
    qt6-base-dev libqt6svg6 libxcb1-dev qcoro-qt6-dev nlohmann-json3-dev rapidjson-dev libsimdjson-dev libfmt-dev libsodium-dev libutf8proc-dev
    libre2-dev libglib2.0-dev libsecret-1-dev
)
packages_soak=(faketime python3)
packages_idle=(dbus-daemon libglib2.0-bin python3 python3-dbusmock)
packages_world=(dbus dbus-bin dbus-daemon gnome-keyring libsecret-tools libglib2.0-bin)
# A program in a Wayland session needs its plugin.
packages_wayland=(qt6-wayland)
# A private desktop with a panel, and what looks at it, clicks and takes pictures.
packages_desktop=(
    dbus dbus-daemon xvfb xfwm4 xfconf xfce4-panel xfce4-notifyd
    at-spi2-core adwaita-icon-theme hicolor-icon-theme librsvg2-common fonts-dejavu-core
    xdotool x11-utils imagemagick util-linux python3 python3-gi gir1.2-atspi-2.0 python3-dbusmock
)
# The other kinds of panel that the tests try.
packages_panels=(trayer sway waybar grim "${packages_wayland[@]}")
# What they export to: the clipboard, and a portal with panels of its own.
packages_exports=(xclip xdg-desktop-portal xdg-desktop-portal-gtk)
packages_libreoffice=(libreoffice-calc-nogui)
packages_test=(
    "${packages_exports[@]}" "${packages_world[@]}" "${packages_soak[@]}" "${packages_idle[@]}" "${packages_desktop[@]}" "${packages_panels[@]}"
    libgtest-dev libbenchmark-dev openssl python3-gi python3-dbus zsh man-db tmux systemd-journal-remote
    clang-16 llvm-16 libclang-rt-16-dev clang-format clang-tidy-16 desktop-file-utils appstream
)
# The programs that it is measured beside.
packages_side_by_side=("${packages_desktop[@]}" libbenchmark-dev openssl keepassxc qbittorrent)
# Makes a Debian package and looks at it.
packages_package=(dpkg-dev debhelper)
packages_package_check=(lintian debootstrap)
packages_coverage=(gcovr)
packages_fuzz=(clang-16 libclang-rt-16-dev)

# install_packages NAME...: installs those that are missing, as root or through sudo, after saying which. Fails with a
# clear message where it may not.
install_packages() {
    local missing=() name
    for name in "$@"; do
        if ! dpkg-query -W -f '${db:Status-Status}' "$name" 2>/dev/null | grep -qx installed; then
            missing+=("$name")
        fi
    done
    ((${#missing[@]})) || return 0
    if ! command -v apt-get >/dev/null; then
        echo "This needs the following Debian packages, or what they hold: ${missing[*]}" >&2
        return 1
    fi
    local as_root=()
    if ((EUID != 0)); then
        if ! command -v sudo >/dev/null; then
            echo "Please have these packages installed first: apt-get install ${missing[*]}" >&2
            return 1
        fi
        as_root=(sudo)
    fi
    echo "Installing: ${missing[*]}" >&2
    if ! { "${as_root[@]}" apt-get update -qq && "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null; }; then
        echo "These packages could not be installed, see above: ${missing[*]}" >&2
        return 1
    fi
}
