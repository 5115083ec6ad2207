# Sourced by the benchmark show makers. grid_show FILE COUNT INFO BODY writes a 1920x1080 show of
# COUNT texts in a grid of four columns over the 480x270 pane; BODY is a function that prints one
# text's elements, called with the text's index, its cell's left, right and top, and the next
# row's top.
grid_show() {
  local out=$1 count=$2 info=$3 body=$4
  local rows=$(( (count + 3) / 4 )) i col row left top
  {
    echo '<?xml version="1.0"?>'
    echo '<File>'
    echo "  <Header><ApplicationName>Lumivane</ApplicationName><Version>0.1.0</Version><Info>Benchmark: $info.</Info></Header>"
    echo '  <Global><Resolution>1920x1080</Resolution><BackGroundColor>2105376</BackGroundColor></Global>'
    echo '  <Text>'
    echo "    <TextCount>$count</TextCount>"
    for ((i = 1; i <= count; i++)); do
      col=$(( (i - 1) % 4 )); row=$(( (i - 1) / 4 ))
      left=$(( col * 120 )); top=$(( row * 270 / rows ))
      echo "    <${i}Text>"
      "$body" "$i" "$left" $(( left + 120 )) "$top" $(( (row + 1) * 270 / rows ))
      echo "    </${i}Text>"
    done
    echo '  </Text>'
    echo '</File>'
  } >"$out"
}
