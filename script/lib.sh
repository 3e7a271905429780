# What the scripts of this folder share; to be sourced, after `set -euo pipefail`.
# shellcheck shell=bash

repo=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd -P)

# Things that are expensive to make and belong to no checkout: the Wine tree, the guest's kernel.
# shellcheck disable=SC2034
cache=${PYRUX_CACHE:-${HOME:-/root}/.cache/pyrux}

# The exit code for "this machine cannot run it", as automake and CTest know it. A broken run never ends so.
readonly cannot_run=77

say()
{
    printf '%s\n' "$*" >&2
}

# fail TEXT [CODE]
fail()
{
    say "${0##*/}: $1"
    exit "${2:-1}"
}

as_root()
{
    if ((EUID == 0)); then
        "$@"
    else
        sudo "$@"
    fi
}

# missing_packages NAME... : those that are not installed, one per line
missing_packages()
{
    local installed name
    installed=$(dpkg-query -W -f '${db:Status-Status} ${Package}\n' "$@" 2>/dev/null || true)
    for name in "$@"; do
        grep -qx "installed $name" <<<"$installed" || echo "$name"
    done
}

# install_packages NAME... : asks apt for nothing when all is there, and for the lists only when something is missing
install_packages()
{
    local missing
    mapfile -t missing < <(missing_packages "$@")
    if ((${#missing[@]} == 0)); then
        return 0
    fi
    say "Installing ${missing[*]}"
    # A list that failed to load is not yet a failure: the installation decides.
    as_root apt-get -q -o Acquire::Retries=3 -o DPkg::Lock::Timeout=600 update >&2 || true
    as_root env DEBIAN_FRONTEND=noninteractive apt-get -q -y -o Acquire::Retries=3 -o DPkg::Lock::Timeout=600 \
        -o Dpkg::Use-Pty=0 install --no-install-recommends "${missing[@]}" >&2
}

# once FOLDER FUNCTION : runs FUNCTION NEW-FOLDER and moves the folder into place when it succeeded.
# Two callers at a time make it once; an interrupted one leaves nothing that looks finished.
once()
{
    local folder=$1 make=$2
    if [[ -d $folder ]]; then
        return 0
    fi
    mkdir -p "$(dirname "$folder")"
    (
        flock 9
        if [[ ! -d $folder ]]; then
            rm -rf "$folder.new"
            mkdir "$folder.new"
            "$make" "$folder.new"
            mv "$folder.new" "$folder"
        fi
    ) 9>"$folder.lock"
}

# source_files PATTERN... : files below the current folder that git knows or would add
source_files()
{
    git -c safe.directory='*' ls-files -co --exclude-standard -- "$@" | while read -r file; do
        if [[ -f $file ]]; then
            echo "$file"
        fi
    done
}
