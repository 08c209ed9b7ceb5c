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

/// Words that people use for an operation's verb, and the verbs that they may mean, the likeliest first.
constexpr struct {
    std::string_view said;
    std::string_view meant[3];
} kVerbs[] = {
    {"create", {"add"}},
    {"insert", {"add"}},
    {"make", {"add"}},
    {"new", {"add"}},
    {"add", {"add"}},
    {"remove", {"delete"}},
    {"erase", {"delete"}},
    {"destroy", {"delete"}},
    {"drop", {"delete"}},
    {"delete", {"delete"}},
    {"del", {"delete"}},
    {"rm", {"delete"}},
    {"change", {"modify", "set", "update"}},
    {"edit", {"modify", "set", "update"}},
    {"modify", {"modify", "set", "update"}},
    {"update", {"update", "modify", "set"}},
    {"set", {"set", "modify", "update"}},
    {"rename", {"modify", "set"}},
    {"show", {"get"}},
    {"list", {"get"}},
    {"read", {"get"}},
    {"find", {"get", "query"}},
    {"query", {"query", "get"}},
    {"fetch", {"get"}},
    {"print", {"get"}},
    {"view", {"get"}},
    {"get", {"get"}},
};
constexpr std::string_view kPlurals[] = {"collection", "list", "s"};

/// A name taken apart: "listUsers" is a verb that may mean "get", and many of "user".
struct Request {
    std::vector<std::string_view> verbs;
    std::string thing;
    bool many = false;
};

/// The letters and digits, small.
std::string folded(std::string_view name)
{
    std::string text;
    for (const char c : name)
        if (std::isalnum(static_cast<unsigned char>(c)))
            text += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

/// Takes the plural off a thing.
bool take_plural(std::string &thing)
{
    for (const std::string_view plural : kPlurals)
        if (thing.size() > plural.size() + 1 && thing.ends_with(plural)) {
            thing.resize(thing.size() - plural.size());
            return true;
        }
    return false;
}

/// Every way to read a name, the verb at its beginning, at its end, or left out.
std::vector<Request> readings(std::string_view name)
{
    const std::string text = folded(name);
    std::vector<Request> all;
    const auto add = [&](std::vector<std::string_view> verbs, std::string thing, bool many) {
        if (thing.empty()) return;
        all.push_back({verbs, thing, many});
        if (take_plural(thing)) all.push_back({std::move(verbs), std::move(thing), true});
    };
    for (const auto &verb : kVerbs) {
        std::vector<std::string_view> meant;
        for (const std::string_view each : verb.meant)
            if (!each.empty()) meant.push_back(each);
        const bool many = verb.said == "list";
        if (text.starts_with(verb.said)) add(meant, text.substr(verb.said.size()), many);
        if (text.ends_with(verb.said)) add(meant, text.substr(0, text.size() - verb.said.size()), many);
    }
    add({"get"}, text, false);
    return all;
}

/// How badly an operation fits a reading; SIZE_MAX when it does not.
size_t misfit(const Request &request, std::string_view operation)
{
    const size_t verb_size =
        std::find_if(operation.begin(), operation.end(), [](unsigned char c) { return std::isupper(c); }) -
        operation.begin();
    const auto verb = std::find(request.verbs.begin(), request.verbs.end(), operation.substr(0, verb_size));
    if (verb == request.verbs.end()) return SIZE_MAX;
    std::string thing = folded(operation.substr(verb_size));
    constexpr std::string_view kCollection = "collection";
    const bool many = thing.ends_with(kCollection);
    if (many) thing.resize(thing.size() - kCollection.size());
    if (thing != request.thing) return SIZE_MAX;
    return 2 * static_cast<size_t>(verb - request.verbs.begin()) + (many == request.many ? 0 : 1);
}

std::string hint(std::string_view name)
{
    return name.empty() ? "" : " (did you mean " + std::string(name) + "?)";
}

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

std::string_view nearest_operation(std::string_view wrong, const Names &names)
{
    if (wrong.empty() || wrong.size() > kLongestWord) return {};
    std::string_view best;
    size_t least = SIZE_MAX;
    for (const Request &request : readings(wrong))
        for (const std::string_view name : names)
            if (const size_t distance = misfit(request, name); distance < least) {
                least = distance;
                best = name;
            }
    return best.empty() ? nearest(wrong, names) : best;
}

std::string did_you_mean(std::string_view wrong, const Names &names)
{
    return hint(nearest(wrong, names));
}

std::string did_you_mean_operation(std::string_view wrong, const Names &names)
{
    return hint(nearest_operation(wrong, names));
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
