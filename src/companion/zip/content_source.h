#pragma once

#include <memory>

#include "companion/os.h"
#include "companion/zip/parallel_deflate.h"

namespace companion::zip {

enum class LineEnds { kAsTheyAre, kToLf, kToCrLf };

// The content of a file from its beginning, with the requested line ends. A file with a zero byte
// in its first 32 KiB is no text and not changed. Throws Failure kZipReadFailed.
ContentReader ReadContent(std::shared_ptr<os::ReadableFile> file, LineEnds line_ends);

}  // namespace companion::zip
