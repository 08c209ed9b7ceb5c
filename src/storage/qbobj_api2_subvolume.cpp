// Subvolumes of a volume, as the btrfs tool lists them:
//
//     btrfs subvolume list -r /tank/ | grep path | awk '{print $9}'
//
// -r for snapshots only. The tool is started without a shell, and the two filters are ours.
#include <cerrno>
#include <climits>
#include <cstring>
#include <utility>

#include "frame/name_set.h"
#include "frame/program.h"
#include "frame/text_file.h"
#include "storage/snapshots.h"

namespace qb {
namespace {

constexpr size_t kPieceSize = 4095;  // a longer path is listed in pieces
constexpr int kPathField = 9;        // "ID 256 gen 7 top level 5 path NAME"
constexpr char kBlanks[] = " \t";

enum class Which { all, snapshots };

/// The path in a line: a word, so that it ends at its first blank. Empty when the line is shorter.
char *path_in(char *line)
{
    char *word = line + strspn(line, kBlanks);
    for (int i = 1; i < kPathField; i++) {
        word += strcspn(word, kBlanks);
        word += strspn(word, kBlanks);
    }
    word[strcspn(word, kBlanks)] = '\0';
    return word;
}

uint32_t append_path(CallContext *ctx, List<Subvolume> &list, const char *path)
{
    Subvolume *subvolume = list.append(ctx);
    TRY_MEMORY(ctx);
    subvolume->key = subvolume->Path = noted(ctx, path);
    TRY_MEMORY(ctx);
    return 0;
}

uint32_t append_subvolume(CallContext *ctx, List<Subvolume> &list, const char *volume, const char *name, size_t size)
{
    return append_path(ctx, list, apr_psprintf(pool_of(ctx->qbdb), "/%s/%.*s", volume, static_cast<int>(size), name));
}

/// Starts the tool. 0, or why it did not start.
int start_tool(Program &tool, const char *volume, Which which)
{
    char folder[PATH_MAX];
    const int size = snprintf(folder, sizeof folder, "/%s/", volume);
    if (size < 0 || static_cast<size_t>(size) >= sizeof folder) return ENAMETOOLONG;
    const char *const all[] = {"btrfs", "subvolume", "list", folder, nullptr};
    const char *const snapshots[] = {"btrfs", "subvolume", "list", "-r", folder, nullptr};
    return tool.start(which == Which::snapshots ? snapshots : all);
}

uint32_t list_subvolumes(CallContext *ctx, const char *volume, Which which, List<Subvolume> &list)
{
    QB_ASSERT(volume);
    Program tool;
    const int why = start_tool(tool, volume, which);
    const TextFile listing(why ? nullptr : tool.open_output());
    // A system without the tool is one without subvolumes: that is no failure.
    if (listing) TRY(read_subvolumes(ctx, listing.get(), volume, list));
    else if (why != ENOENT)
        LOG_FAILURE(ctx, "%s: Failed to call btrfs subvolume list! volume = %s, only_snapshot = %d\n",
                    "_getSubvolumeCollection", volume, which == Which::snapshots);
    if (which == Which::snapshots) return 0;
    // The volume's root is a subvolume that the tool does not list.
    return append_path(ctx, list, apr_psprintf(pool_of(ctx->qbdb), "/%s", volume));
}

}  // namespace

uint32_t read_subvolumes(CallContext *ctx, FILE *listing, const char *volume_name, List<Subvolume> &list)
{
    Line line;
    while (line.read(listing)) {
        if (!strstr(line.text, "path")) continue;
        const char *path = path_in(line.text);
        size_t left = strlen(path);
        do {
            const size_t size = left < kPieceSize ? left : kPieceSize;
            TRY(append_subvolume(ctx, list, volume_name, path, size));
            path += size;
            left -= size;
        } while (left > 0);
    }
    return 0;
}

uint32_t x_qbobj_getSubvolumeFullCollection(CallContext *ctx, sqlite3 * /*db*/, const char *volumeName,
                                            SubvolumeCollection *subvolumes)
{
    QB_ASSERT(subvolumes);
    List<Subvolume> list(&subvolumes->Subvolume);
    return list_subvolumes(ctx, volumeName, Which::all, list);
}

uint32_t x_qbobj_getSubvolumeSnapshotCollection(CallContext *ctx, sqlite3 * /*db*/, const char *volumeName,
                                                SubvolumeCollection *subvolumes)
{
    QB_ASSERT(subvolumes);
    List<Subvolume> list(&subvolumes->Subvolume);
    return list_subvolumes(ctx, volumeName, Which::snapshots, list);
}

uint32_t x_qbobj_getSubvolumeDataCollection(CallContext *ctx, sqlite3 * /*db*/, const char *volumeName,
                                            SubvolumeCollection *subvolumes)
{
    QB_ASSERT(subvolumes);
    Subvolume *all = nullptr;
    List<Subvolume> all_list(&all);
    TRY(list_subvolumes(ctx, volumeName, Which::all, all_list));
    Subvolume *snapshots = nullptr;
    List<Subvolume> snapshot_list(&snapshots);
    TRY(list_subvolumes(ctx, volumeName, Which::snapshots, snapshot_list));

    NameSet snapshot_paths(ctx);
    snapshot_paths.add_all(snapshots, &Subvolume::Path);
    TRY_MEMORY(ctx);
    List<Subvolume> list(&subvolumes->Subvolume);
    while (all) {
        Subvolume *subvolume = std::exchange(all, all->next);
        if (snapshot_paths.contains(subvolume->Path)) continue;
        subvolume->next = nullptr;
        list.link(subvolume);
    }
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
