#include "completion.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <set>

#include "arguments.h"
#include "describe.h"
#include "emit.h"
#include "records.h"
#include "selection.h"
#include "stored_names.h"

namespace qbcli {
namespace {

constexpr const char *kBashScript =
    R"script(# bash completion for qbobj: source it, or put it in bash's completion directory.
_qbobj() {
    local -a words
    local current previous= candidate prefix= plain= rest quoted
    # bash takes words apart at "="; here a word ends at a blank.
    read -ra words <<< "${COMP_LINE:0:COMP_POINT}"
    [[ ${COMP_LINE:0:COMP_POINT} == *[[:space:]] ]] && words+=("")
    current=${words[-1]}
    (( ${#words[@]} > 1 )) && previous=${words[-2]}
    COMPREPLY=()
    case $previous in
        -d|--database|--root|init|importUsers|batch|export|import|diff)
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
            # A name may hold what the shell has a meaning for: it is compared without backslashes, offered with them.
            rest=$current
            while [[ $rest == *\\?* ]]; do
                plain+=${rest%%\\*}
                rest=${rest#*\\}
                plain+=${rest:0:1}
                rest=${rest:1}
            done
            plain+=$rest
            words[-1]=$plain
            while IFS= read -r candidate; do
                [[ $candidate == "$plain"* ]] || continue
                printf -v quoted %q "${candidate#*=}"
                COMPREPLY+=("$prefix$quoted")
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
        -d|--database|--root|init|importUsers|batch|export|import|diff) [[ ${words[CURRENT]} == -* ]] || { _files; return } ;;
    esac
    case ${words[CURRENT]} in
        @*) compset -P @; _files; return ;;
        *=@*) compset -P '*=@'; _files; return ;;
    esac
    candidates=(${(f)"$(${words[1]} complete -- "${(@Q)words[2,CURRENT]}" 2> /dev/null)"})
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

/// What a value may be: words of the tables, or names of the database.
struct Values {
    const char *const *words = nullptr;
    const char *statement = nullptr;
};

/// The values of a name: "severity" or "query.severity".
Values values_of(const QbobjOperation &operation, const std::string &name)
{
    for (uint32_t i = 0; i < operation.count; i++) {
        const QbobjArgument &argument = operation.arguments[i];
        if (!is_input(argument)) continue;
        if (is_scalar(argument) && name == argument.name)
            return {argument.words, names_statement(operation.family, name)};
        if (!argument.type) continue;
        std::string_view path = name;
        if (const std::string qualified = std::string(argument.name) + "."; path.starts_with(qualified))
            path.remove_prefix(qualified.size());
        const size_t inner = path.rfind('.') + 1;  // 0 when there is no dot
        const QbobjField *type = type_inside(argument.type, path.substr(0, inner));
        const QbobjField *field = type ? find_field(type, path.substr(inner)) : nullptr;
        if (field) return {qbobj_field_words(type, field), names_statement(type->name, field->name)};
    }
    return {};
}

/// The database that the options before the last word name.
std::string chosen_database(const CLI::App &app, const std::vector<std::string> &words)
{
    const CLI::Option *option = app.get_option_no_throw("--database");
    const char *usual = getenv("QBOBJ_DB");
    std::string path = usual ? usual : "";
    for (size_t i = 0; i + 1 < words.size(); i++) {
        const std::string &word = words[i];
        if (word == "--") break;
        if (app.get_option_no_throw(word) == option && i + 2 < words.size()) path = words[i + 1];
        else if (word.starts_with("--database=")) path = word.substr(strlen("--database="));
        else if (word.starts_with("-d") && word.size() > 2) path = word.substr(2);
    }
    const char *home = getenv("HOME");
    return path.starts_with("~/") && home ? home + path.substr(1) : path;
}

/// What can stand behind the "=" of a word.
std::vector<std::string> value_candidates(const CLI::App &app, const QbobjOperation &operation,
                                          const std::vector<std::string> &words)
{
    const std::string &current = words.back();
    const size_t end = current.find('=');
    const std::string name = current.substr(0, end);
    const Values values = values_of(operation, name);
    std::vector<std::string> candidates;
    for (const char *const *word = values.words; word && *word; word++) candidates.push_back(name + "=" + *word);
    if (values.statement)
        for (const std::string &stored :
             stored_names(chosen_database(app, words), values.statement, current.substr(end + 1)))
            candidates.push_back(std::string(name).append("=").append(stored));
    return candidates;
}

/// The fields that --fields can name next, behind those that it names already.
std::vector<std::string> field_candidates(const QbobjOperation &operation, const std::string &current)
{
    const size_t start = current.find_last_of(",=") + 1;  // 0 when there is neither
    const std::string before = current.substr(0, start);
    const size_t inner = current.rfind('.');
    const size_t depth = inner == std::string::npos || inner < start ? start : inner + 1;
    std::vector<std::string> candidates;
    for (const std::string &name : returned_fields(operation)) {
        const bool deeper = name.find('.', depth - start) != std::string::npos;
        if (!deeper && std::find(candidates.begin(), candidates.end(), before + name) == candidates.end())
            candidates.push_back(before + name);
    }
    return candidates;
}

/// The languages of --emit, behind what stands before them.
std::vector<std::string> languages(const std::string &before)
{
    std::vector<std::string> candidates;
    for (const char *const *language = kLanguages; *language; language++) candidates.push_back(before + *language);
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
    const QbobjOperation *operation = plain.empty() ? nullptr : qbobj_find_operation(plain[0].c_str());
    const bool fields = current.starts_with("--fields=") || (words.size() > 1 && words[words.size() - 2] == "--fields");
    if (fields && operation) return field_candidates(*operation, current);
    if (current.starts_with("--emit=")) return languages("--emit=");
    if (words.size() > 1 && words[words.size() - 2] == "--emit") return languages("");
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
    if (operation) {
        if (current.find('=') != std::string::npos) return value_candidates(app, *operation, words);
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
