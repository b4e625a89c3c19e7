# What tests that run the program from outside share. `run` wants $prefix: the program with what runs
# it ahead of it. All work, settings and logs lie in a fresh folder that goes when the test ends.
folder=$(mktemp -d)
trap 'chmod -R u+w "$folder"; rm -rf "$folder"' EXIT
cd "$folder" || exit 1
XDG_STATE_HOME="$folder/state"
XDG_CONFIG_HOME="$folder/config"
export XDG_STATE_HOME XDG_CONFIG_HOME

fail() {
  echo "FAILED: $*" >&2
  for log in stdout stderr; do
    [ -s $log ] && head -n 20 $log | sed "s/^/  $log: /" >&2
  done
  exit 1
}

attempt() {
  $prefix "$@" >stdout.raw 2>stderr.raw
  status=$?
}

# run STATUS ARGUMENT...: the program must end with this status; its output goes to the files stdout
# and stderr, without the carriage returns of the other system.
run() {
  expected=$1
  shift
  attempt "$@"
  case "$prefix" in *run-wine.sh*)
    # Now and then Wine fails to start a program, without a word. It is started once more.
    [ $status != 1 ] || [ -s stdout.raw ] || [ -s stderr.raw ] || attempt "$@"
  esac
  tr -d '\r' <stdout.raw >stdout
  tr -d '\r' <stderr.raw >stderr
  rm stdout.raw stderr.raw
  [ $status = "$expected" ] || fail "status $status instead of $expected: $*"
}

output_is() {
  [ "$(cat stdout)" = "$1" ] || fail "expected the output: $1"
}
