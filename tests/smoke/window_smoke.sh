#!/usr/bin/env bash
# Starts the real program under a virtual display on a demo show, plays through the command line,
# takes a screenshot of the output window and checks that the texts are where the show puts them,
# saves a frame with Ctrl+S, opens a clone output, stops with Escape on the output window and quits
# with a terminate signal, which must end the program cleanly with exit code 0.
set -euo pipefail
program=$1
here=$(cd "$(dirname "$0")" && pwd)
smoke_name="window smoke"
. "$here/smoke_lib.sh"

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

output_gone() { ! xdotool search --name '^Lumivane Output$'; }

screenshot_when_playing
clone_open() { xdotool search --name '^Lumivane Clone 1$'; }
wait_for 10 clone_open || fail "the clone output did not open"
sleep 1  # the clone's first frames
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

quit_cleanly
echo "window smoke: played, stopped and quit cleanly"
