// The space that a Time Machine sparse bundle takes: the number of its bands times the band size that the bundle's
// description gives.
#include <dirent.h>

#include <charconv>
#include <cstring>
#include <memory>

#include "frame/text_file.h"
#include "qbobj/legacy.h"

namespace {

constexpr size_t kPathSize = 4096;
constexpr size_t kLineSize = 4096;
constexpr int kMostLines = 10000;  // a description has some dozens
constexpr uint64_t kMegabyte = 1000000;

struct CloseDirectory {
    void operator()(DIR *directory) const { closedir(directory); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

/// Path of a file in a bundle; empty when it does not fit.
struct Path {
    char text[kPathSize];

    Path(const char *folder, const char *bundle, const char *name)
    {
        const int size = snprintf(text, sizeof text, "%s/%s/%s", folder, bundle, name);
        if (size < 0 || static_cast<size_t>(size) >= sizeof text) text[0] = '\0';
    }
};

bool find_bundle(const char *folder, char (&name)[256])
{
    const Directory directory(opendir(folder));
    if (!directory) return false;
    while (const dirent *entry = readdir(directory.get())) {
        if (!strstr(entry->d_name, ".sparsebundle")) continue;
        snprintf(name, sizeof name, "%s", entry->d_name);
        return true;
    }
    return false;
}

/// A number after blanks and a plus sign, if any; 0 when there is none or when it is out of range.
uint64_t number_of(const char *text)
{
    text += strspn(text, " \t\n\v\f\r");
    text += *text == '+';
    uint64_t number = 0;
    std::from_chars(text, text + strlen(text), number);
    return number;
}

/// Reads the size of a band, which stands on the line after its key; 0 when the file does not say.
uint64_t read_band_size(FILE *description)
{
    static constexpr char kKey[] = "\t<key>band-size</key>\n";
    static constexpr char kNumber[] = "\t<integer>";
    constexpr size_t kNumberLength = sizeof kNumber - 1;
    char line[kLineSize];
    bool next = false;
    for (int i = 0; i < kMostLines && fgets(line, sizeof line, description); i++) {
        if (next && strncmp(line, kNumber, kNumberLength) == 0) return number_of(line + kNumberLength);
        next = strcmp(line, kKey) == 0;
    }
    return 0;
}

uint64_t count_entries(DIR *directory)
{
    uint64_t count = 0;
    while (const dirent *entry = readdir(directory))
        if (strcmp(entry->d_name, ".") != 0 && strcmp(entry->d_name, "..") != 0) count++;
    return count;
}

}  // namespace

uint64_t get_tm_used_mb(const char *path)
{
    char bundle[sizeof(dirent::d_name)];
    if (!path || !find_bundle(path, bundle)) return 0;
    // The user can put anything here.
    const qb::TextFile description = qb::open_text_file(Path(path, bundle, "Info.plist").text);
    if (!description) return 0;
    const uint64_t band_size = read_band_size(description.get());
    const Directory bands(opendir(Path(path, bundle, "bands").text));
    if (!bands) return 0;
    return band_size * count_entries(bands.get()) / kMegabyte;
}
// SPDX-License-Identifier: Apache-2.0
