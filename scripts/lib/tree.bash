# shellcheck shell=bash
# tree.bash - functions for minimal Debian systems in directories, and for temporary copies of them.
# Changes in a copy do not stay. Sourced by scripts that root runs.

# skip REASON - ends the script as a skipped test.
skip() {
    echo "SKIPPED: $1"
    exit 77
}

# fail REASON - ends the script as a failed test.
fail() {
    echo "FAILED: $1" >&2
    exit 1
}

# package_sources SUITE - prints the lines of sources.list for Debian's SUITE, with the package
# source of this machine. sid has neither security updates nor stable updates.
package_sources() {
    local line
    # shellcheck disable=SC2016 # apt expands it
    apt-get indextargets --format 'deb $(REPO_URI) $(CODENAME) $(COMPONENT)' \
        'Identifier: Packages' 'Origin: Debian' 'Component: main' |
        sed -nE "s/^(deb .*) [a-z]+(-security|-updates)? main$/\1 $1\2 main/p" | sort -u |
        while read -r line; do
            [[ $1 == sid && $line == *' sid-'* ]] || echo "$line"
        done
}

# minimal_tree SUITE DIRECTORY - makes DIRECTORY/tree with debootstrap's variant minbase (only the
# essential packages of SUITE and apt) and a name for the loopback address. Does nothing if the tree
# exists. Without root it ends with status 77. It fails without debootstrap or a package source.
minimal_tree() (
    suite=$1 directory=$2
    [[ ! -d $directory/tree ]] || exit 0
    [[ $EUID -eq 0 ]] || skip "only root can make a Debian tree"
    command -v debootstrap >/dev/null || fail "debootstrap is missing; scripts/setup installs it"
    sources=$(package_sources "$suite")
    mirror=$(sed -n "s/^deb \(.*\) $suite main$/\1/p" <<<"$sources" | head -n 1)
    [[ -n $mirror ]] || fail "this machine has no package source of Debian"

    tree=$directory/unfinished
    trap 'rm -rf "$tree"' EXIT
    rm -rf "$tree"
    mkdir -p "$directory"
    # debootstrap knows only older suites; it makes the later ones in the same way as sid.
    # It mounts /proc and /sys in the tree, and must not leave them there for what removes the tree.
    unshare --mount debootstrap --variant=minbase "$suite" "$tree" "$mirror" sid >"$directory/log" 2>&1 || {
        tail -n 5 "$directory/log"
        fail "$suite cannot be fetched; see $directory/log"
    }
    echo "$sources" >"$tree/etc/apt/sources.list"
    apt-config dump Acquire::http Acquire::https >"$tree/etc/apt/apt.conf.d/99machine"
    # No package starts a service in the tree.
    install -m 0755 /dev/stdin "$tree/usr/sbin/policy-rc.d" <<<$'#!/bin/sh\nexit 101'
    # The lists of sid are valid for a week; a mirror can be older.
    [[ $suite != sid ]] ||
        echo 'Acquire::Check-Valid-Until "false";' >>"$tree/etc/apt/apt.conf.d/99machine"
    printf '%s\n' '127.0.0.1 localhost' '::1 localhost' >"$tree/etc/hosts"
    rm -f "$tree"/var/cache/apt/archives/*.deb
    mv "$tree" "$directory/tree"
)

# apart SCRIPT ARG... - continues as "SCRIPT --inside ARG..." in new mount and process namespaces.
# Their mounts and processes end with the script.
apart() {
    [[ $EUID -eq 0 ]] || skip "only root can make a temporary file system"
    unshare --mount --pid --fork --mount-proc true 2>/dev/null ||
        skip "this machine allows no mount namespace"
    exec unshare --mount --pid --fork --mount-proc --kill-child "$1" --inside "${@:2}"
}

# copy_of TREE [CHANGES] - sets $root to a temporary copy of the directory TREE. Its changes are
# kept in memory, mounted over /mnt. With CHANGES they are kept in that directory, which must be
# empty, and which the caller removes.
copy_of() {
    local place=${2:-/mnt}
    [[ -n ${2:-} ]] || mount -t tmpfs tmpfs "$place"
    mkdir "$place"/{upper,work,root}
    mount -t overlay -o "lowerdir=$1,upperdir=$place/upper,workdir=$place/work" overlay \
        "$place/root" || skip "this machine allows no overlay of a file system"
    furnish "$place/root"
}

# furnish TREE - sets $root to the directory TREE and mounts there what programs expect.
furnish() {
    root=$1
    mount -t proc proc "$root/proc"
    mount --rbind /dev "$root/dev"
    mount -t tmpfs tmpfs "$root/run"
    mount -t tmpfs tmpfs "$root/tmp"
    chmod 1777 "$root/tmp"
    mkdir -m 1777 "$root/tmp/.X11-unix" # as a started system has it
}

# share_network - gives $root what it takes to reach the package sources from this machine.
share_network() {
    cp /etc/resolv.conf "$root/etc/resolv.conf"
    cp -r /usr/local/share/ca-certificates "$root/usr/local/share/"
}

# The environment in a tree. The variable "container" keeps packages from changing the settings of the
# running kernel.
bare=(/usr/bin/env -i container=tree PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8
    DEBIAN_FRONTEND=noninteractive)

# inside COMMAND... - runs COMMAND in the copy, with a bare environment.
inside() { chroot "$root" "${bare[@]}" "$@"; }

# enter COMMAND... - continues as COMMAND, with a bare environment and the copy as its file system.
# Unlike chroot alone, this allows COMMAND to create user namespaces.
enter() {
    mount --rbind /sys "$root/sys"
    mount -t tmpfs tmpfs "$root/dev/shm"
    cd "$root" || return
    pivot_root . mnt
    # shellcheck disable=SC2016 # for the inner shell
    exec chroot . "${bare[@]}" /bin/sh -c 'umount --lazy /mnt && exec "$@"' sh "$@"
}
