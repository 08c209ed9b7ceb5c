#include "completion.h"

#include <algorithm>
#include <set>

#include "arguments.h"
#include "describe.h"
#include "records.h"

namespace qbcli {
namespace {

constexpr const char *kBashScript =
    R"script(# bash completion for qbobj: source it, or put it in bash's completion directory.
_qbobj() {
    local -a words
    local current previous= candidate prefix=
    # bash takes words apart at "="; here a word ends at a blank.
    read -ra words <<< "${COMP_LINE:0:COMP_POINT}"
    [[ ${COMP_LINE:0:COMP_POINT} == *[[:space:]] ]] && words+=("")
    current=${words[-1]}
    (( ${#words[@]} > 1 )) && previous=${words[-2]}
    COMPREPLY=()
    case $previous in
        -d|--database|--root|init|importUsers|batch)
            if [[ $current != -* ]]; then
                mapfile -t COMPREPLY < <(compgen -f -- "$current")
                return
            fi ;;
    esac
    # What bash replaces begins behind the "=" where it takes words apart there.
    [[ $COMP_WORDBREAKS == *=* ]] || prefix=${current%%=*}=
    case $current in
        @*) mapfile -t COMPREPLY < <(compgen -P @ -f -- "${current#@}"); return ;;
        *=@*) mapfile -t COMPREPLY < <(compgen -P "$prefix@" -f -- "${current#*=@}"); return ;;
        *=*)
            while read -r candidate; do
                [[ $candidate == "$current"* ]] && COMPREPLY+=("$prefix${candidate#*=}")
            done < <("${words[0]}" complete -- "${words[@]:1}" 2> /dev/null)
            return ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$("${words[0]}" complete -- "${words[@]:1}" 2> /dev/null)" -- "$current")
    if [[ ${#COMPREPLY[@]} -gt 0 && ${COMPREPLY[0]} == *[=.] ]]; then
        compopt -o nospace 2> /dev/null
    fi
}
complete -F _qbobj qbobj
)script";

constexpr const char *kZshScript = R"script(#compdef qbobj
# zsh completion for qbobj: put it as _qbobj in a directory of $fpath, or source it.
_qbobj() {
    local -a candidates open closed
    case ${words[CURRENT-1]} in
        -d|--database|--root|init|importUsers|batch) [[ ${words[CURRENT]} == -* ]] || { _files; return } ;;
    esac
    case ${words[CURRENT]} in
        @*) compset -P @; _files; return ;;
        *=@*) compset -P '*=@'; _files; return ;;
    esac
    candidates=(${(f)"$(${words[1]} complete -- "${(@)words[2,CURRENT]}" 2> /dev/null)"})
    if [[ ${words[CURRENT]} == *=* ]]; then
        candidates=("${(@)candidates#*=}")
        compset -P '*='
        compadd -a candidates
        return
    fi
    open=(${(M)candidates:#*[=.]})
    closed=(${candidates:#*[=.]})
    compadd -S '' -a open
    compadd -a closed
}
if [[ ${funcstack[1]} == _qbobj ]]; then _qbobj "$@"; else compdef _qbobj qbobj; fi
)script";

/// The fields of a type as completions: "Email=", and "HomeFolderSettings." for what has fields itself.
void add_fields(std::vector<std::string> &candidates, const QbobjField *type, const std::string &before)
{
    for (const std::string_view name : field_names(type)) {
        const std::string whole = before + std::string(name);
        candidates.push_back(whole + "=");
        const QbobjField *field = find_field(type, name);
        if (field && field->subtype) candidates.push_back(whole + ".");
    }
}

/// The type that a dotted name leads into; null when it leads nowhere.
const QbobjField *type_inside(const QbobjField *type, std::string_view path)
{
    while (type && !path.empty()) {
        const size_t dot = path.find('.');
        const QbobjField *field = find_field(type, path.substr(0, dot));
        type = field ? field->subtype : nullptr;
        path.remove_prefix(dot + 1);
    }
    return type;
}

/// Names that can follow an operation, for a current word that may be dotted already.
std::vector<std::string> argument_candidates(const QbobjOperation &operation, const std::string &current)
{
    const std::string before = current.substr(0, current.rfind('.') + 1);
    std::vector<std::string> candidates;
    for (uint32_t i = 0; i < operation.count; i++) {
        const QbobjArgument &argument = operation.arguments[i];
        if (!is_input(argument)) continue;
        const std::string qualified = std::string(argument.name) + ".";
        if (before.empty() && is_scalar(argument)) candidates.push_back(argument.name + std::string("="));
        if (!argument.type) continue;
        std::string_view path = before;
        if (path.starts_with(qualified)) path.remove_prefix(qualified.size());
        if (const QbobjField *type = type_inside(argument.type, path)) add_fields(candidates, type, before);
    }
    return candidates;
}

/// The words that a name may hold, for a word "severity=" or "query.severity=e".
std::vector<std::string> value_candidates(const QbobjOperation &operation, const std::string &current)
{
    const std::string name = current.substr(0, current.find('='));
    const char *const *words = nullptr;
    for (uint32_t i = 0; i < operation.count && !words; i++) {
        const QbobjArgument &argument = operation.arguments[i];
        if (!is_input(argument)) continue;
        if (name == argument.name) words = argument.words;
        if (!argument.type) continue;
        std::string_view path = name;
        if (const std::string qualified = std::string(argument.name) + "."; path.starts_with(qualified))
            path.remove_prefix(qualified.size());
        const size_t inner = path.rfind('.') + 1;  // 0 when there is no dot
        const QbobjField *type = type_inside(argument.type, path.substr(0, inner));
        const QbobjField *field = type ? find_field(type, path.substr(inner)) : nullptr;
        if (field) words = qbobj_field_words(type, field);
    }
    std::vector<std::string> candidates;
    for (; words && *words; words++) candidates.push_back(name + "=" + *words);
    return candidates;
}

void add_options(std::vector<std::string> &candidates, const CLI::App &app)
{
    for (const CLI::Option *option : app.get_options())
        for (const std::string &name : option->get_lnames()) candidates.push_back("--" + name);
}

/// The program's own command of a name; null for an operation and an unknown word.
const CLI::App *find_command(const CLI::App &app, const std::string &name)
{
    for (const CLI::App *command : app.get_subcommands([](const CLI::App *) { return true; }))
        if (command->get_name() == name && !qbobj_find_operation(name.c_str())) return command;
    return nullptr;
}

bool takes_value(const CLI::App &app, const std::string &word)
{
    if (word.size() < 2 || word[0] != '-' || word.find('=') != std::string::npos) return false;
    const CLI::Option *option = app.get_option_no_throw(word);
    return option && option->get_items_expected_max() > 0;
}

void append(std::vector<std::string> &candidates, const Names &names)
{
    candidates.insert(candidates.end(), names.begin(), names.end());
}

std::vector<std::string> command_candidates(const CLI::App &app)
{
    std::vector<std::string> candidates;
    for (const CLI::App *command :
         app.get_subcommands([](const CLI::App *command) { return !command->get_group().empty(); }))
        candidates.push_back(command->get_name());
    append(candidates, operation_names());
    return candidates;
}

}  // namespace

const char *completion_script(const std::string &shell)
{
    return shell == "zsh" ? kZshScript : kBashScript;
}

std::vector<std::string> plain_words(const CLI::App &app, const std::vector<std::string> &words)
{
    std::vector<std::string> plain;
    for (size_t i = 0; i < words.size(); i++) {
        if (takes_value(app, words[i])) i++;
        else if (!words[i].starts_with('-')) plain.push_back(words[i]);
    }
    return plain;
}

std::vector<std::string> completion_candidates(const CLI::App &app, const std::vector<std::string> &words)
{
    const std::string current = words.empty() ? "" : words.back();
    const std::vector<std::string> plain =
        plain_words(app, {words.begin(), words.empty() ? words.end() : words.end() - 1});
    std::vector<std::string> candidates;
    if (current.starts_with('-')) {
        add_options(candidates, app);
        const CLI::App *command = plain.empty() ? nullptr : find_command(app, plain[0]);
        if (command) add_options(candidates, *command);
        std::sort(candidates.begin(), candidates.end());
        candidates.erase(std::unique(candidates.begin(), candidates.end()), candidates.end());
        return candidates;
    }
    if (plain.empty()) return command_candidates(app);

    if (plain[0] == "completion") candidates = {"bash", "zsh"};
    if (plain[0] == "journal" && plain.size() == 1)
        candidates = {"on", "off", "status", "list", "show", "stream", "apply"};
    if (plain[0] == "help") candidates = command_candidates(app);
    if (plain[0] == "describe") append(candidates, operation_names());
    if (plain[0] == "describe" || plain[0] == "help") append(candidates, type_names());
    if (const QbobjOperation *operation = qbobj_find_operation(plain[0].c_str())) {
        if (current.find('=') != std::string::npos) return value_candidates(*operation, current);
        candidates = argument_candidates(*operation, current);
        const std::set<std::string> given(plain.begin() + 1, plain.end());
        std::erase_if(candidates, [&](const std::string &candidate) {
            return std::any_of(given.begin(), given.end(),
                               [&](const auto &word) { return word.starts_with(candidate); });
        });
    }
    return candidates;
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
