#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <pugixml.hpp>

#include "core/BackgroundLayout.h"
#include "core/ControlModel.h"

namespace lumivane {

class MainForm;

// What a show's `Global` block (and its `LastBackGroundMesh`) sets, read whole before anything is
// applied, so a show that fails to load changes nothing.
struct GlobalSettings {
  // One control value from the show, already in the control's range.
  struct ControlWrite {
    enum class How : std::uint8_t { Text, Value, Colour };
    ControlHandle control;
    How how = How::Value;
    std::string text;
    std::int32_t value = 0;
  };
  std::vector<ControlWrite> Controls;
  // The background list, when the show has one (an old show without it leaves the list alone).
  std::optional<std::vector<std::string>> Backgrounds;
  std::optional<bool> BackgroundPlaying;
  // Empty when the show names none: the mask and the effect picture are cleared then.
  std::string MaskFileName;
  std::string EffectFileName;
  std::optional<BackGroundMesh> Mesh;
};

// Writes `Global`: the settings of the forms the program has, and for a form it lacks (a bare
// test) the loaded show's elements in their places, then the show's elements this build does not
// know, unchanged.
void XmlWriteGlobal(pugi::xml_node root, MainForm& form, pugi::xml_node keptGlobal);
// Reads `Global` for the forms the program has. Missing elements and numbers that do not read are
// left out: their controls keep what they hold.
GlobalSettings XmlReadGlobal(pugi::xml_node root, MainForm& form);
// Sets the controls, replaces the background list, and hands the mask, effect picture and layout
// to the forms, which send them to the output.
void ApplyGlobal(MainForm& form, const GlobalSettings& settings);

void XmlWriteLastBackGroundMesh(pugi::xml_node root, const BackGroundMesh& mesh);
// The layout the show left, each missing or unreadable value taken from `current`; nothing when
// the show has no LastBackGroundMesh.
std::optional<BackGroundMesh> XmlReadLastBackGroundMesh(pugi::xml_node root, const BackGroundMesh& current);

}  // namespace lumivane
