#include "frame/text_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace qb {

TextFile open_text_file(const char *path)
{
    const int descriptor = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0) return nullptr;
    struct stat status {};
    const bool regular = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    TextFile file(regular ? fdopen(descriptor, "r") : nullptr);
    if (!file) close(descriptor);
    if (!regular) errno = EINVAL;
    return file;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
