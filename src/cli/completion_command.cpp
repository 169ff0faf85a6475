#include "cli/arguments.h"
#include "cli/cli.h"
#include "cli/commands.h"

#include <memory>

namespace {

/// The words that may follow the words so far, for each command of the grammar.
struct Place
{
    QString path; ///< such as "read vp"; empty before any command
    QStringList words;
    QStringList helps; ///< of each word
};

void appendPlaces(const CLI::App &app, const QString &path, QVector<Place> &places)
{
    Place place{path, {}, {}};
    for (const CLI::Option *option : app.get_options())
        for (const std::string &name : option->get_lnames()) {
            place.words.append("--" + QString::fromStdString(name));
            place.helps.append(QString::fromStdString(option->get_description()));
        }
    const auto commands = app.get_subcommands([](const CLI::App *) { return true; });
    for (const CLI::App *command : commands) {
        place.words.append(QString::fromStdString(command->get_name()));
        place.helps.append(QString::fromStdString(command->get_description()));
    }
    places.append(place);
    for (const CLI::App *command : commands)
        appendPlaces(*command, (path + ' ' + QString::fromStdString(command->get_name())).trimmed(),
                     places);
}

/// The shell code that finds out in which place the cursor is, from the words before it.
QString caseLines(const QVector<Place> &places)
{
    QString lines;
    for (const Place &place : places)
        lines += QString("    '%1') words='%2' ;;\n").arg(place.path, place.words.join(' '));
    return lines;
}

QString bash(const QVector<Place> &places)
{
    return QString(R"sh(# bash completion of k7
_k7_words() {
  local place='' word words
  for word in "$@"; do
    case " $(_k7_list "$place") " in *" $word "*) [ "${word#-}" = "$word" ] && place="${place:+$place }$word" ;; esac
  done
  _k7_list "$place"
}
_k7_list() {
  local words=''
  case "$1" in
%1  esac
  printf '%s' "$words"
}
_k7() {
  local current=${COMP_WORDS[COMP_CWORD]}
  COMPREPLY=($(compgen -W "$(_k7_words "${COMP_WORDS[@]:1:COMP_CWORD-1}")" -- "$current"))
}
complete -o default -F _k7 k7
)sh")
        .arg(caseLines(places));
}

QString zsh(const QVector<Place> &places)
{
    return "#compdef k7\nautoload -U +X bashcompinit && bashcompinit\n" + bash(places);
}

QString fish(const QVector<Place> &places)
{
    QString text = "# fish completion of k7\n";
    for (const Place &place : places) {
        QStringList conditions{"__fish_use_subcommand"};
        if (!place.path.isEmpty()) {
            conditions.clear();
            for (const QString &word : place.path.split(' '))
                conditions.append("__fish_seen_subcommand_from " + word);
        }
        for (int i = 0; i < place.words.size(); ++i) {
            const QString word = place.words.at(i);
            const QString what = word.startsWith("--") ? "-l " + word.mid(2) : "-a " + word;
            QString help = place.helps.at(i);
            text += QString("complete -c k7 -n '%1' %2 -d '%3'\n")
                        .arg(conditions.join("; and "), what, help.replace('\'', "\\'"));
        }
    }
    return text;
}

} // namespace

void addCompletion(CLI::App &app, Cli &cli)
{
    auto *command = app.add_subcommand("completion", "Print the completion for a shell");
    const auto shell = std::make_shared<std::string>();
    command->add_option("SHELL", *shell, "bash, zsh or fish")
        ->required()
        ->type_name("")
        ->check(CLI::IsMember({"bash", "zsh", "fish"}));
    command->callback([&app, &cli, shell] {
        cli.setCommand([&app, &cli, shell] {
            QVector<Place> places;
            appendPlaces(app, {}, places);
            const QString text = (*shell == "fish" ? fish : *shell == "zsh" ? zsh : bash)(places);
            cli.report().result({{"type", "completion"}, {"text", text}}, text.trimmed());
            return ExitCode::done;
        });
    });
}
