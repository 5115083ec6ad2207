#!/usr/bin/env bash
# Starts the real program under a virtual display on a demo show, plays through the command line,
# takes a screenshot of the output window and checks that the texts are where the show puts them,
# saves a frame with Ctrl+S, opens a clone output, stops with Escape on the output window and quits
# with a terminate signal, which must end the program cleanly with exit code 0.
set -euo pipefail
program=$1
here=$(cd "$(dirname "$0")" && pwd)
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
fail() { echo "window smoke: $*" >&2; [ -f "$work/app.log" ] && sed 's/^/  app: /' "$work/app.log" >&2; exit 1; }

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

# The demo show as the factory show: the command line starts playback on it. The output count
# comes from the number of entries in the clone positions file, the main output among them: two
# entries make one clone.
mkdir -p "$work/app"
cp "$resources/Demo Counters.xml" "$work/app/Reset.xml"
cat >"$work/app/LastOutputPosition.LMVNUIP" <<'XML'
<UIPosition><Form><Name>frmDisplay</Name><Top>600</Top><Left>700</Left><Width>320</Width><Height>240</Height><Visible>1</Visible><CloneRenderTargetIndex>1</CloneRenderTargetIndex><MirrorX></MirrorX><MirrorY>Y</MirrorY></Form><Form><Name>frmDisplay</Name><Top>0</Top><Left>0</Left><Width>320</Width><Height>240</Height><Visible>1</Visible><CloneRenderTargetIndex>2</CloneRenderTargetIndex><MirrorX></MirrorX><MirrorY></MirrorY></Form></UIPosition>
XML
"$program" --app-folder "$work/app" ";;1;640x480" >"$work/app.log" 2>&1 &
app_pid=$!

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
output_gone() { ! xdotool search --name '^Lumivane Output$'; }

wait_for 20 output_open || fail "no output window"
wait_for 20 playing || fail "playback did not start (no frame rate in the caption)"

clone_open() { xdotool search --name '^Lumivane Clone 1$'; }
wait_for 10 clone_open || fail "the clone output did not open"
sleep 1  # a few frames
output=$(xdotool search --name '^Lumivane Output$' | head -n 1)
xwd -id "$output" -silent -out "$work/output.xwd" || fail "no screenshot of the output window"
if [ -n "${SMOKE_SCREENSHOT:-}" ]; then cp "$work/output.xwd" "$SMOKE_SCREENSHOT"; fi
python3 "$here/check_output.py" "$work/output.xwd" || fail "the output does not show the show"
clone=$(xdotool search --name '^Lumivane Clone 1$' | head -n 1)
xwd -id "$clone" -silent -out "$work/clone.xwd" || fail "no screenshot of the clone"
python3 "$here/check_output.py" "$work/clone.xwd" mirror-y || fail "the clone does not show the output upside down"

# Ctrl+S on the output saves the frame as a PNG in the application folder.
shot="$work/app/Screenshots/frame_00001.png"
for attempt in 1 2 3; do
  window=$(xdotool search --name '^Lumivane Output$' | head -n 1) || fail "the output window went away"
  xdotool windowfocus --sync "$window" key ctrl+s >/dev/null 2>&1 || true
  if wait_for 5 test -s "$shot"; then break; fi
done
[ -s "$shot" ] || fail "Ctrl+S saved no frame"
[ "$(head -c 4 "$shot" | tail -c 3)" = "PNG" ] || fail "the saved frame is no PNG"

# Escape on the output window; a key can be lost while the focus settles, so try a few times.
stopped=no
for attempt in 1 2 3; do
  window=$(xdotool search --name '^Lumivane Output$' | head -n 1) || { stopped=yes; break; }
  xdotool windowfocus --sync "$window" key Escape >/dev/null 2>&1 || true
  if wait_for 5 output_gone; then stopped=yes; break; fi
done
[ "$stopped" = yes ] || fail "Escape did not stop playback"

kill -TERM "$app_pid"
status=0
wait "$app_pid" || status=$?
app_pid=""
[ "$status" -eq 0 ] || fail "the program quit with exit code $status"
echo "window smoke: played, stopped and quit cleanly"
