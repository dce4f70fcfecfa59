# shellcheck shell=bash
# throw_away_tree.bash - for the scripts of tests that install packages: file systems in which
# anything may be done, since nothing of it stays. Sourced, by a script that root calls.

# skip REASON - ends the test as one that this machine cannot try.
skip() {
    echo "SKIPPED: $1"
    exit 77
}

# apart SCRIPT ARG... - goes on as "SCRIPT --inside ARG...", with mounts and processes of its own:
# all of them end with the script.
apart() {
    [[ $EUID -eq 0 ]] || skip "only root can make a throw-away file system"
    unshare --mount --pid --fork --mount-proc true 2>/dev/null ||
        skip "this machine allows no mount namespace"
    exec unshare --mount --pid --fork --mount-proc --kill-child "$1" --inside "${@:2}"
}

# copy_of FOLDER - sets $root to a throw-away copy of the tree in FOLDER. /mnt is covered meanwhile.
copy_of() {
    local place=/mnt
    mount -t tmpfs tmpfs "$place"
    mkdir "$place"/{upper,work,root}
    mount -t overlay -o "lowerdir=$1,upperdir=$place/upper,workdir=$place/work" overlay \
        "$place/root" || skip "this machine allows no overlay of a file system"
    root=$place/root
    mount -t proc proc "$root/proc"
    mount --rbind /dev "$root/dev"
    mount -t tmpfs tmpfs "$root/run"
    mount -t tmpfs tmpfs "$root/tmp"
    chmod 1777 "$root/tmp"
}

# inside COMMAND... - runs it in the copy, with a bare environment.
inside() {
    chroot "$root" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 \
        DEBIAN_FRONTEND=noninteractive "$@"
}
