#pragma once

#include <string>
#include <vector>

// Names that no server may give to a file, by the reason of their refusal.
namespace tests {

// n letters of two bytes.
inline std::string Cyrillic(int n) {
  return n == 0 ? "" : "ж" + Cyrillic(n - 1);
}

struct Refused {
  std::string reason;
  std::vector<std::string> names;
};

inline const std::string kSeparator = "в нём есть разделитель папок.";

inline const Refused kBadNames[] = {
    {"имя пустое.", {""}},
    {"так обозначается папка, а не файл в ней.", {".", ".."}},
    {"оно оканчивается точкой.", {"...", "a.", "a.dll."}},
    {kSeparator,
     {"/", "\\", "..\\a.dll", "../a.dll", "a/b.dll", "a\\b.dll", "/etc/passwd", "../../../evil",
      "a/../../evil", "\\\\server\\share\\a", "\\\\?\\C:\\a"}},
    {"в нём есть двоеточие.", {"C:", "C:a.dll", "C:\\a.dll", "a.txt:stream", "a.txt::$DATA"}},
    {"так в Windows называется устройство.",
     {"CON", "con", "Prn.txt", "AUX.tar.gz", "nul", "NUL.dll", "NUL .dll", "COM1", "com9.log",
      "COM\u00B9", "com\u00B2.txt", "LPT1", "lpt9", "LPT\u00B3.prn", "CONIN$", "conout$.txt",
      "CLOCK$"}},
    {"оно оканчивается пробелом.", {"a ", "a.dll ", "a. ", "a\u00A0", ".. "}},
    {"оно начинается с пробела.", {" ", " a"}},
    {"в нём есть управляющий символ.",
     {std::string("a\0.dll", 6), std::string(1, '\0'), "a\x01", "a\tb", "a\r\nb", "a\x1F", "a\x7F",
      "a\u0085b"}},
    {"в нём есть невидимый символ.",
     // NOLINTNEXTLINE(misc-misleading-bidirectional): this is what is refused
     {"a\u202Egpj.exe", "a\u200B.dll", "\uFEFFa.dll", "a\u200F", "a\u2066b\u2069", "\u061Ca"}},
    {"в нём есть один из символов < > \" | ? *.", {"a<b", "a>b", "a\"b", "a|b", "a?b", "*.dll"}},
    {"это не текст в кодировке UTF-8.",
     {"a\xFF", "\xC0\xAE\xC0\xAE", "\xC0\xAF", "\xED\xA0\x80", "\xD0"}},
    {"оно слишком длинное.", {std::string(256, 'a'), Cyrillic(128)}}};

}  // namespace tests
