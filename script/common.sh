# Sourced by the scripts of this folder: brings them to the top of the tree and lets them fail with one clear line.
set -euo pipefail
name=script/$(basename "$0")
cd "$(dirname "${BASH_SOURCE[0]}")/.."

fail() {
  echo "$name: $*" >&2
  exit 1
}

# step "what it does" COMMAND...: runs a command and says which step failed.
step() {
  local what=$1
  shift
  "$@" || fail "$what failed"
}

# build PRESET [TARGET...]: configures and builds.
build() {
  local preset=$1
  shift
  step "configuring (preset $preset)" cmake --preset "$preset" --log-level=WARNING
  step "building (preset $preset)" cmake --build --preset "$preset" ${*:+--target "$@"}
}
