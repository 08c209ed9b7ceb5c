// Text files that others put in their places: opening one never waits, and only files are opened.
#pragma once

#include <cstdio>
#include <memory>

namespace qb {

struct CloseFile {
    void operator()(FILE *file) const { fclose(file); }
};
using TextFile = std::unique_ptr<FILE, CloseFile>;

/// Opens a file for reading. Null with errno set when that fails: EINVAL when it is no regular file but a folder, a
/// device or a pipe.
TextFile open_text_file(const char *path);

}  // namespace qb
