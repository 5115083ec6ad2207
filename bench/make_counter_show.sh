#!/usr/bin/env bash
# Writes the benchmark show: COUNT integer counters (default 32) that change in every frame, in a
# grid of four columns over the 480x270 pane. Usage: bench/make_counter_show.sh FILE [COUNT]
set -euo pipefail
source "$(dirname "$0")/grid_show.sh"
counter() {
  local i=$1 left=$2 right=$3 top=$4 bottom=$5
  echo "      <Color>16777215</Color><AlignX>Centered</AlignX><TextType>Counter</TextType><SelfTime>1</SelfTime>"
  echo "      <FONT_SIZE_ZERO>18</FONT_SIZE_ZERO><Particle><Count>1</Count></Particle>"
  echo "      <Position><Top>$top</Top><Bottom>$bottom</Bottom><Left>$left</Left><Right>$right</Right></Position>"
  echo "      <Text3D>0</Text3D>"
  echo "      <Counter><Value>$(( i * 1000 ))</Value><Offset>$i</Offset><ValueType>Integer</ValueType><Direction>Increment (+)</Direction><MinDigits>0</MinDigits><MaxDigits>8</MaxDigits><LineBreak>1</LineBreak></Counter>"
  echo "      <Font><FontName>DejaVu Sans Mono</FontName><FontSize>18</FontSize></Font>"
}
grid_show "$1" "${2:-32}" "counters changing every frame" counter
