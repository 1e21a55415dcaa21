#pragma once

namespace tmw {

// A product without a manifest that writes to protected places without rights gets copies of its
// own from Windows, which this program does not see. Returns false after reporting that there is
// one of the database (unless on a client) or of the settings: it may hold the latest entries.
bool HasNoVirtualCopies(bool is_client);

}  // namespace tmw
