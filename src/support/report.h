#pragma once

#include <string>

// The report in the support bundle: sections of lines that end in CR LF. Nothing in it is a
// password or stands in the user's database. A section that cannot be made says why.
namespace support {

// manifest: the path of the manifest of the last update, which need not exist; with it the
// installed files are compared, without it they are listed.
std::string MakeReport(const std::string& manifest);

}  // namespace support
