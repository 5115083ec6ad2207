# What the window smoke tests share: a virtual display of their own, a work folder, clean-up of
# both and of the program, and polling. Sourced after setting `here` and `smoke_name`.
resources=$(cd "$here/../../resources" && pwd)
work=$(mktemp -d)
xvfb_pid=""
app_pid=""
cleanup() {
  [ -n "$app_pid" ] && kill -KILL "$app_pid" 2>/dev/null || true
  [ -n "$xvfb_pid" ] && kill "$xvfb_pid" 2>/dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT
fail() { echo "$smoke_name: $*" >&2; [ -f "$work/app.log" ] && sed 's/^/  app: /' "$work/app.log" >&2; exit 1; }

# A display of our own: Xvfb picks a free number and tells it through the pipe.
exec 3<> <(:)
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp >"$work/xvfb.log" 2>&1 &
xvfb_pid=$!
read -r -t 10 display <&3 || fail "Xvfb did not start"
export DISPLAY=":$display"
export XDG_RUNTIME_DIR="$work/runtime"
mkdir -m 700 "$XDG_RUNTIME_DIR"
# Mesa and the toolkits keep caches that are not ours to hunt as leaks.
export ASAN_OPTIONS="${ASAN_OPTIONS:-}:detect_leaks=0"

wait_for() {  # wait_for SECONDS COMMAND...: polls until the command succeeds
  local until=$((SECONDS + $1)); shift
  until "$@" >/dev/null 2>&1; do
    kill -0 "$app_pid" 2>/dev/null || fail "the program ended early"
    [ $SECONDS -lt $until ] || return 1
    sleep 0.2
  done
}
playing() { xdotool search --name '^Lumivane \[FPS: [0-9.]+\]$'; }
output_open() { xdotool search --name '^Lumivane Output$'; }
# Waits for the output window and playback, lets a few frames pass, and dumps the output to
# $work/output.xwd (also to $SMOKE_SCREENSHOT when set).
screenshot_when_playing() {
  wait_for 20 output_open || fail "no output window"
  wait_for 20 playing || fail "playback did not start (no frame rate in the caption)"
  sleep 1
  local output
  output=$(xdotool search --name '^Lumivane Output$' | head -n 1)
  xwd -id "$output" -silent -out "$work/output.xwd" || fail "no screenshot of the output window"
  if [ -n "${SMOKE_SCREENSHOT:-}" ]; then cp "$work/output.xwd" "$SMOKE_SCREENSHOT"; fi
}
# A terminate signal must end the program cleanly, with exit code 0.
quit_cleanly() {
  kill -TERM "$app_pid"
  local status=0
  wait "$app_pid" || status=$?
  app_pid=""
  [ "$status" -eq 0 ] || fail "the program quit with exit code $status"
}
# play_and_check SHOW SIZE CHECKER COMPLAINT: plays the show (a file of resources/) as the factory
# show at SIZE from the command line, checks a screenshot of the output with the Python CHECKER
# beside this file (failing with COMPLAINT) and quits cleanly.
play_and_check() {
  mkdir -p "$work/app"
  cp "$resources/$1" "$work/app/Reset.xml"
  "$program" --app-folder "$work/app" ";;1;$2" >"$work/app.log" 2>&1 &
  app_pid=$!
  screenshot_when_playing
  python3 "$here/$3" "$work/output.xwd" || fail "$4"
  quit_cleanly
}
