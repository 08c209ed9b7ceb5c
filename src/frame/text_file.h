// Text files that others put in their places: opening one never waits, and only files are opened. Their lines.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace qb {

struct CloseFile {
    void operator()(FILE *file) const { fclose(file); }
};
using TextFile = std::unique_ptr<FILE, CloseFile>;

/// Opens a file for reading. Null with errno set when that fails: EINVAL when it is no regular file but a folder, a
/// device or a pipe.
TextFile open_text_file(const char *path);

/// A line of any length without its end; the memory goes with it.
struct Line {
    char *text = nullptr;
    size_t room = 0;

    Line() = default;
    Line(const Line &) = delete;
    Line &operator=(const Line &) = delete;
    ~Line() { free(text); }

    /// Reads the next one. False at the end of the file.
    bool read(FILE *file)
    {
        if (getline(&text, &room, file) < 0) return false;
        text[strcspn(text, "\n")] = '\0';
        return true;
    }
};

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
