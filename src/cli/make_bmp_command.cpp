#include "cli/arguments.h"
#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/device.h"
#include "cli/failure.h"
#include "cli/input_files.h"
#include "common/picture.h"
#include "imaging/picture_conversion.h"

#include <QDir>
#include <QHash>
#include <QSet>
#include <QtConcurrent>

namespace {

using pictureConversion::Batch;
using pictureConversion::Job;
using pictureConversion::Outcome;

struct Arguments
{
    std::vector<std::string> pictures;
    std::string size;
    std::string output;
    bool isNumbered = false;
};

/// What looks like a picture, or was named, must be one.
bool mustConvert(const InputFile &file)
{
    return file.isNamed || QDir::match(picture::filePatterns, QFileInfo(file.path).fileName());
}

/// Pictures with one output would overwrite each other, on a memory card if not here.
void checkOutputs(const QVector<Batch> &batches)
{
    QHash<QString, Job> jobs;
    for (const Batch &batch : batches)
        for (const Job &job : batch) {
            const QString key = job.output.toCaseFolded();
            if (!jobs.contains(key)) {
                jobs.insert(key, job);
                continue;
            }
            const Job other = jobs.value(key);
            throw Failure{ExitCode::usage,
                          other.source + " and " + job.source + " would both become " + job.output +
                              (other.output == job.output ? "" : ", where names ignore case"),
                          "Rename one of them, or put their numbers in front with --numbered."};
        }
}

/// Tells of one conversion; true when it went well, or did not need to.
bool tell(Report &report, const Job &job, Outcome outcome, bool mustBePicture)
{
    switch (outcome) {
    case Outcome::Written:
        tellMade(report, job.output, QFileInfo(job.output).size(), {{"from", job.source}});
        return true;
    case Outcome::NoPicture:
        if (mustBePicture)
            report.fail(ExitCode::badFile, job.source + " is no picture that can be used",
                        "Replace it or leave it out.");
        else
            report.note(job.source + " is no picture and is left out");
        return !mustBePicture;
    case Outcome::Unwritable:
        break;
    }
    const Failure failure = unwritable(job.output);
    report.fail(failure.code, failure.cause, failure.remedy);
    return false;
}

int make(Report &report, const Arguments &given)
{
    const QSize size = screenSize(arguments::text(given.size));
    const QString folder = arguments::text(given.output);
    const QVector<InputFile> files = inputFiles(given.pictures);
    QStringList paths;
    QSet<QString> required;
    for (const InputFile &file : files) {
        paths.append(file.path);
        if (mustConvert(file))
            required.insert(file.path);
    }
    paths.removeDuplicates();
    PictureList list;
    list.load(paths);
    const auto batches = pictureConversion::batches(list.pictures(), folder, given.isNumbered);
    checkOutputs(batches);
    makeFolder(folder);
    const std::function<QVector<Outcome>(const Batch &)> convert = [size](const Batch &batch) {
        QVector<Outcome> outcomes;
        for (const Job &job : batch)
            outcomes.append(pictureConversion::convert(job, size));
        return outcomes;
    };
    const auto converted = QtConcurrent::mapped(batches, convert);
    bool isGood = true;
    for (int i = 0; i < batches.size(); ++i) {
        checkInterrupt();
        const QVector<Outcome> outcomes = converted.resultAt(i);
        for (int j = 0; j < outcomes.size(); ++j)
            isGood &= tell(report, batches.at(i).at(j), outcomes.at(j),
                           required.contains(batches.at(i).at(j).source));
    }
    return isGood ? ExitCode::done : ExitCode::badFile;
}

} // namespace

void addMakeBmp(CLI::App &make, Cli &cli)
{
    const auto given = std::make_shared<Arguments>();
    CLI::App *command = make.add_subcommand("bmp", "Pictures of the size of a screen");
    command->add_option("PICTURE|FOLDER", given->pictures, "Pictures, or folders with them")
        ->type_name("")
        ->required();
    command->add_option("--size", given->size, "Width and height in pixels, such as 480x272")
        ->type_name("WxH")
        ->required();
    command->add_option("-o,--output", given->output, "The folder to write to")
        ->type_name("FOLDER")
        ->required();
    command->add_flag("--numbered", given->isNumbered,
                      "Put the number of each picture in front of its name");
    command->callback(
        [&cli, given] { cli.setCommand([&cli, given] { return ::make(cli.report(), *given); }); });
}
