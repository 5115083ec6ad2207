#!/usr/bin/env bash
# Writes the text box benchmark show: COUNT 3D texts (default 64) of 32 random letters and digits
# each, new in every frame, on plain text boxes in a grid of four columns over the 480x270 pane,
# each box 120 x 16, so its texture is 128 x 16 and the boxes do not overlap.
# Usage: bench/make_textbox_show.sh FILE [COUNT]
set -euo pipefail
source "$(dirname "$0")/grid_show.sh"
box() {
  local left=$2 right=$3 top=$4
  echo "      <Color>16777215</Color><AlignX>Centered</AlignX><TextType>Counter</TextType><SelfTime>1</SelfTime>"
  echo "      <FONT_SIZE_ZERO>12</FONT_SIZE_ZERO><Particle><Count>1</Count></Particle>"
  echo "      <Position><Top>$top</Top><Bottom>$(( top + 16 ))</Bottom><Left>$left</Left><Right>$right</Right></Position>"
  echo "      <Text3D>1</Text3D><BackGroundColor>4194304</BackGroundColor><Extrude3D>0</Extrude3D>"
  echo "      <Counter><Value>0</Value><Offset>1</Offset><ValueType>Alphanumeric</ValueType><Direction>Increment (+)</Direction><MinDigits>32</MinDigits><MaxDigits>32</MaxDigits><LineBreak>1</LineBreak></Counter>"
  echo "      <Font><FontName>DejaVu Sans Mono</FontName><FontSize>12</FontSize></Font>"
}
grid_show "$1" "${2:-64}" "3D text boxes changing every frame" box
