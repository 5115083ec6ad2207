#!/usr/bin/env bash
# Writes the extruded text benchmark show: COUNT 3D texts (default 32) of 12 letters and digits,
# extruded 0.2 em and turning about two axes in every frame, in a grid of four columns over the
# 480x270 pane. The strings stand still, so the meshes are built once and every frame only draws.
# Usage: bench/make_extruded_show.sh FILE [COUNT]
set -euo pipefail
source "$(dirname "$0")/grid_show.sh"
extruded() {
  local i=$1 left=$2 right=$3 top=$4 bottom=$5
  echo "      <Color>$(( 0x40A0FF + i * 0x000800 ))</Color><AlignX>Centered</AlignX><TextType>Counter</TextType><SelfTime>100000000</SelfTime>"
  echo "      <FONT_SIZE_ZERO>22</FONT_SIZE_ZERO><Particle><Count>1</Count></Particle>"
  echo "      <Position><Top>$top</Top><Bottom>$bottom</Bottom><Left>$left</Left><Right>$right</Right></Position>"
  echo "      <Text3D>1</Text3D><BackGroundColor>2105376</BackGroundColor><Extrude3D>0.2</Extrude3D>"
  echo "      <Rotation><AngleX>1</AngleX><AngleY>$(( 2 + i % 3 ))</AngleY><AngleZ>0</AngleZ><LoopX>1</LoopX><LoopY>1</LoopY><LoopZ>0</LoopZ><FineTuneRotationAngle>0</FineTuneRotationAngle></Rotation>"
  echo "      <Counter><Value>$(( 1000 * i ))</Value><Offset>1</Offset><ValueType>Alphanumeric</ValueType><Direction>Increment (+)</Direction><MinDigits>12</MinDigits><MaxDigits>12</MaxDigits><LineBreak>1</LineBreak></Counter>"
  echo "      <Font><FontName>DejaVu Sans</FontName><FontSize>22</FontSize><FontBold>1</FontBold></Font>"
}
grid_show "$1" "${2:-32}" "extruded 3D texts turning" extruded
