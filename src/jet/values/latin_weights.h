#pragma once

#include <cstdint>
#include <string_view>

// Weights of the sort order "General" for the letters and signs of U+00A1 to U+017F that code page
// 1251 does not have. Small letters weigh as their capitals do.
namespace jet::sort_weights {

// Letters that are another one with an accent: pairs of the letter and the other one.
struct AccentedLetters {
  std::uint8_t accent;
  std::u16string_view pairs;
};

inline constexpr AccentedLetters kAccentedLetters[] = {
    {0x03, u"ªAºOıIĸK"},     {0x0E, u"ÁAĆCÉEÍIĹLŃNÓOŔRŚSÚUÝYŹZ"},
    {0x0F, u"ÀAÈEÌIÒOÙU"},   {0x10, u"ĊCĖEĠGİIŻZ"},
    {0x11, u"ĿL"},           {0x12, u"ÂAĈCÊEĜGĤHÎIĴJÔOŜSÛUŴWŶY"},
    {0x13, u"ÄAËEÏIÖOÜUŸY"}, {0x14, u"ČCĎDĚEĽLŇNŘRŠSŤTŽZ"},
    {0x15, u"ĂAĔEĞGĬIŎOŬU"}, {0x17, u"ĀAĒEĪIŌOŪU"},
    {0x19, u"ÃAĨIÑNÕOŨU"},   {0x1A, u"ÅAŮU"},
    {0x1B, u"ĄAĘEĮIŲU"},     {0x1C, u"ÇCĢGĶKĻLŅNŖRŞSŢT"},
    {0x1D, u"ŐOŰU"},         {0x1E, u"ĐDĦH"},
    {0x1F, u"ŁL"},           {0x21, u"ØO"},
    {0x48, u"ŉN"},           {0x68, u"ÐD"},
};

// Letters that weigh as two others do.
inline constexpr std::u16string_view kDoubleLetters = u"ÆAEŒOEßSSÞTHĲIJ";

struct SignWeight {
  char16_t sign;
  std::uint16_t primary;
  std::uint8_t accent = 0;
};

inline constexpr SignWeight kSigns[] = {
    {u'¡', 0x2B10}, {u'¢', 0x34A6}, {u'£', 0x34A7}, {u'¥', 0x34A9},       {u'¨', 0x2B12},
    {u'¯', 0x2B13}, {u'²', 0x3A00}, {u'³', 0x3C00}, {u'´', 0x2B14},       {u'¸', 0x2B15},
    {u'¹', 0x3800}, {u'¼', 0x3712}, {u'½', 0x3716}, {u'¾', 0x371A},       {u'¿', 0x2B16},
    {u'×', 0x3309}, {u'÷', 0x330A}, {u'Ŋ', 0x6305}, {u'Ŧ', 0x6E06, 0x1E}, {u'ſ', 0x6C06},
};

// Control characters from U+0080 on are ignored, with codes that follow each other.
inline constexpr char32_t kFirstControl = 0x80;
inline constexpr char32_t kEndOfControls = 0xA0;
inline constexpr std::uint8_t kFirstControlCode = 0x1E;

}  // namespace jet::sort_weights
