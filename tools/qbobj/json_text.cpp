#include "json_text.h"

#include <set>
#include <vector>

#include "failure.h"
#include "memory.h"
#include "utf8.h"

namespace qbcli {
namespace {

/// Watches the parser, which by itself would let the last of two equal members win.
class Strictness {
public:
    explicit Strictness(const std::string &origin) : origin_(origin) {}

    void see(int depth, Json::parse_event_t event, const Json &parsed)
    {
        using Event = Json::parse_event_t;
        switch (event) {
            case Event::object_start: members_.emplace_back(); [[fallthrough]];
            case Event::array_start:
                if (depth >= kDeepestJson)
                    throw Failure(origin_, "nested deeper than " + std::to_string(kDeepestJson) + " levels");
                break;
            case Event::key:
                if (const auto &name = parsed.get_ref<const std::string &>(); !members_.back().insert(name).second)
                    throw Failure(origin_, name + " is given twice");
                break;
            case Event::object_end: members_.pop_back(); break;
            default: break;
        }
    }

private:
    const std::string &origin_;
    std::vector<std::set<std::string>> members_;  // of the objects that are open
};

/// The parser's words without its name, and without the text that it read last.
std::string reason(const std::string &what)
{
    static constexpr std::string_view kPosition = "parse error at ";
    const size_t start = what.find(kPosition);
    std::string text = start == std::string::npos ? what : what.substr(start + kPosition.size());
    return text.substr(0, text.find("; last read"));
}

int digit(char c)
{
    if (c >= '0' && c <= '9') return c - '0';
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

}  // namespace

Json parse_json(std::string_view text, const std::string &origin)
{
    Strictness strictness(origin);
    try {
        return Json::parse(text.begin(), text.end(), [&](int depth, Json::parse_event_t event, Json &parsed) {
            strictness.see(depth, event, parsed);
            return true;
        });
    } catch (const Json::parse_error &error) {
        throw Failure(origin, "malformed JSON at " + reason(error.what()));
    } catch (const Json::out_of_range &) {
        throw Failure(origin, "malformed JSON: a number is too large for any field");
    }
}

std::string hexadecimal(const void *bytes, size_t size)
{
    static constexpr char kDigits[] = "0123456789abcdef";
    const auto *at = static_cast<const unsigned char *>(bytes);
    std::string text;
    text.reserve(2 * size);
    for (size_t i = 0; i < size; i++) {
        text += kDigits[at[i] >> 4];
        text += kDigits[at[i] & 0xF];
    }
    return text;
}

bool from_hexadecimal(const std::string &text, std::string &bytes)
{
    if (text.size() % 2) return false;
    bytes.clear();
    for (size_t i = 0; i < text.size(); i += 2) {
        const int high = digit(text[i]);
        const int low = digit(text[i + 1]);
        if (high < 0 || low < 0) return false;
        bytes += static_cast<char>(high << 4 | low);
    }
    return true;
}

void wipe(Json &value)
{
    if (value.is_string()) return wipe(value.get_ref<std::string &>());
    if (value.is_structured())
        for (Json &part : value) wipe(part);
}

std::string brief(const Json &value)
{
    constexpr size_t kColumns = 40;
    return fit(printable(value.dump(-1, ' ', false, Json::error_handler_t::replace)), kColumns);
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
