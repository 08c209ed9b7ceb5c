// Writes the manual: qbobj_manual SOURCE FOLDER DATE
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "pages.h"

namespace {

void write_file(const std::filesystem::path &path, const std::string &text)
{
    std::filesystem::create_directories(path.parent_path());
    std::ofstream out(path);
    out << text;
    out.close();
    if (!out) throw std::runtime_error(path.string() + ": cannot be written");
}

}  // namespace

int main(int argc, char **argv)
{
    if (argc != 4) {
        std::cerr << "usage: qbobj_manual SOURCE FOLDER DATE\n";
        return 2;
    }
    try {
        const std::filesystem::path folder = argv[2];
        for (const char *section : {"man1", "man3"}) std::filesystem::remove_all(folder / section);
        for (const auto &[name, text] : manual::all_pages(manual::Source(argv[1], argv[3])))
            write_file(folder / name, text);
        return 0;
    } catch (const std::exception &failure) {
        std::cerr << "qbobj_manual: " << failure.what() << "\n";
        return 1;
    }
}
// SPDX-License-Identifier: Apache-2.0
