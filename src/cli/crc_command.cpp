#include "cli/arguments.h"
#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/failure.h"
#include "cli/input_files.h"
#include "common/file_number.h"
#include "crc/crc_check_item.h"

#include <QFileInfo>

namespace {

constexpr int pageBytes = 0x1000;
constexpr int flashKind = 0; // in the low byte of a request
constexpr int pictureKind = 1;

/// What the module knows `item` by.
QJsonObject json(const CrcCheckItem &item, const QString &path)
{
    QJsonObject json{
        {"type", "unit"}, {"file", path}, {"unit", item.name}, {"crc", item.calculatedCrc}};
    switch (item.request & 0xFF) {
    case flashKind:
        json.insert("block", item.unit >> 8);
        json.insert("pages", item.unit & 0xFF);
        break;
    case pictureKind:
        json.insert("picture", item.unit);
        break;
    default:
        json.insert("bytes", item.unit);
    }
    return json;
}

/// What no CRC covers: of a flash file the bytes behind its last whole page.
int uncoveredBytes(const QByteArray &content, const QVector<CrcCheckItem> &items)
{
    int covered = 0;
    for (const CrcCheckItem &item : items) {
        if ((item.request & 0xFF) != flashKind)
            return 0;
        covered += (item.unit & 0xFF) * pageBytes;
    }
    return content.size() - covered;
}

void tellUncovered(Report &report, const QString &path, int bytes)
{
    if (report.isJson())
        report.result({{"type", "uncovered"}, {"file", path}, {"bytes", bytes}}, {});
    else
        report.note(QString("%1: the last %2 bytes are in no unit").arg(path).arg(bytes));
}

void listUnits(Report &report, const InputFile &file)
{
    const QString name = QFileInfo(file.path).fileName();
    if (!crcCheck::isChecked(name) && !file.isNamed)
        return;
    const QByteArray content = contentOf(file.path);
    const crcCheck::Units units = crcCheck::unitsOf(name, content);
    for (const CrcCheckItem &item : units.items)
        report.result(json(item, file.path),
                      item.calculatedCrc.rightJustified(4) + "  " + item.name);
    if (units.refusal)
        throw Failure{ExitCode::badFile, file.path + " is no picture that can be used",
                      "What is listed for it is the CRC of no pixels."};
    const bool hasUnits = crcCheck::isChecked(name) && leadingNumber(name) > 0;
    if (!hasUnits && units.items.isEmpty() && file.isNamed)
        throw Failure{ExitCode::badFile, file.path + " has no units",
                      "Name a bin or ICO file that begins with its number, a bmp file or ZOLTOS."};
    const int uncovered = hasUnits ? uncoveredBytes(content, units.items) : 0;
    if (uncovered > 0)
        tellUncovered(report, file.path, uncovered);
}

int listAll(Report &report, const std::vector<std::string> &paths)
{
    int code = ExitCode::done;
    for (const InputFile &file : inputFiles(paths)) {
        try {
            listUnits(report, file);
        } catch (const Failure &failure) {
            if (failure.code == ExitCode::interrupted)
                throw;
            code = report.fail(failure.code, failure.cause, failure.remedy);
        }
    }
    return code;
}

} // namespace

void addCrc(CLI::App &app, Cli &cli)
{
    const auto files = std::make_shared<std::vector<std::string>>();
    CLI::App *command =
        app.add_subcommand("crc", "The CRC of every unit of files, without a module");
    command->add_option("FILE|FOLDER", *files, "bin, ICO and bmp files, or folders with them")
        ->type_name("")
        ->required();
    command->callback(
        [&cli, files] { cli.setCommand([&cli, files] { return listAll(cli.report(), *files); }); });
}
