#include "suggest.h"

#include <algorithm>
#include <cctype>

namespace qbcli {
namespace {

bool same_letter(char a, char b)
{
    return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
}

bool begins_with(std::string_view name, std::string_view start)
{
    return name.size() > start.size() && std::equal(start.begin(), start.end(), name.begin(), same_letter);
}

constexpr size_t kLongestWord = 64;  // nobody mistypes a name by more than that

}  // namespace

size_t edit_distance(std::string_view a, std::string_view b)
{
    std::vector<size_t> before_last(b.size() + 1);
    std::vector<size_t> last(b.size() + 1);
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); j++) row[j] = j;
    for (size_t i = 1; i <= a.size(); i++) {
        before_last.swap(last);
        last.swap(row);
        row[0] = i;
        for (size_t j = 1; j <= b.size(); j++) {
            const size_t replaced = last[j - 1] + (same_letter(a[i - 1], b[j - 1]) ? 0 : 1);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, replaced});
            const bool swapped = i > 1 && j > 1 && same_letter(a[i - 1], b[j - 2]) && same_letter(a[i - 2], b[j - 1]);
            if (swapped) row[j] = std::min(row[j], before_last[j - 2] + 1);
        }
    }
    return row[b.size()];
}

std::string_view nearest(std::string_view wrong, const Names &names)
{
    if (wrong.empty() || wrong.size() > kLongestWord) return {};
    std::string_view best;
    size_t least = std::max<size_t>(1, wrong.size() / 3) + 1;
    for (const std::string_view name : names) {
        const size_t distance = edit_distance(wrong, name);
        if (distance < least) {
            least = distance;
            best = name;
        }
    }
    if (!best.empty() || wrong.size() < 3) return best;
    // The beginning of a longer name is as good a hint, the shortest such name the likeliest.
    for (const std::string_view name : names)
        if (begins_with(name, wrong) && (best.empty() || name.size() < best.size())) best = name;
    return best;
}

std::string did_you_mean(std::string_view wrong, const Names &names)
{
    const std::string_view name = nearest(wrong, names);
    return name.empty() ? "" : " (did you mean " + std::string(name) + "?)";
}

}  // namespace qbcli
