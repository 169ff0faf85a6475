#include "cli/update.h"

#include "cli/exchanges.h"
#include "cli/memory.h"
#include "cli/report.h"
#include "cli/transfer.h"

#include <CLI/CLI.hpp>

#include <QJsonArray>

#include <algorithm>
#include <numeric>

namespace {

using Kind = ProjectFile::Kind;

QString uncoveredText(const ProjectFile &file)
{
    return QString("its %1%2 bytes, which no check covers")
        .arg(file.units.isEmpty() ? "" : "last ")
        .arg(file.uncovered);
}

QVector<int> differingBlocks(const ProjectFile &file)
{
    QVector<int> blocks;
    for (int block = 0; block < file.units.size(); ++block)
        if (!file.units.at(block).isIntact())
            blocks.append(block);
    return blocks;
}

bool isOverEd2(Kind kind)
{
    return kind == Kind::Flash || kind == Kind::Picture;
}

constexpr char otherModule[] = "Do both ports lead to this module? Else its memory may be worn or "
                               "write-protected.";
constexpr char notRestarted[] = "The module was not restarted, and goes on with the system that it "
                                "has. Send it again; --no-verify restarts it unchecked.";

/// What the module calls `blocks` of `file`.
QString placeText(const ProjectFile &file, const QVector<int> &blocks)
{
    if (file.kind == Kind::Os)
        return "operating system";
    if (file.number < 0)
        return "picture memory";
    if (file.kind != Kind::Flash)
        return QString("%1 %2")
            .arg(file.kind == Kind::Icon ? "flash block" : "picture")
            .arg(file.number);
    QStringList numbers;
    for (const int block : blocks)
        numbers.append(QString::number(file.number + block));
    return QString("flash block%1 %2").arg(blocks.size() == 1 ? "" : "s", numbers.join(", "));
}

} // namespace

void Update::Choice::addOptions(CLI::App &command)
{
    auto *dryRunOption = command.add_flag("-n,--dry-run", dryRun,
                                          "Only tell what would be sent; exit code 1 if anything");
    command.add_flag("--all", all, "Send everything, also what is equal")->excludes(dryRunOption);
    command.add_flag("--no-verify", noVerify, "Do not check what was sent")->excludes(dryRunOption);
}

Update::Update(Exchanges &module, Report &report, const QVector<ProjectFile> &files,
               const Choice &choice)
    : m_module(module), m_report(report), m_choice(choice)
{
    for (const ProjectFile &file : files)
        m_jobs.append({file, {}, {}, false});
}

int Update::run()
{
    const bool usesEd2 = std::any_of(m_jobs.begin(), m_jobs.end(),
                                     [](const Job &job) { return isOverEd2(job.file.kind); });
    if (usesEd2 && !m_choice.dryRun)
        m_module.hold(Link::Ed2);
    m_record = openRecord();
    if (!m_choice.all)
        compareAll();
    for (Job &job : m_jobs)
        plan(job);
    sendAll();
    if (!m_choice.dryRun && !verifyAndRestart())
        return ExitCode::stillDiffers;
    return finish();
}

SentRecord Update::openRecord()
{
    const bool isNeeded = std::any_of(m_jobs.begin(), m_jobs.end(), [](const Job &job) {
        return isFlash(job.file.kind) || job.file.kind == Kind::Os;
    });
    // A simulated module forgets everything when the program ends.
    return SentRecord(isNeeded && !m_module.links().isSimulated() ? memory::deviceId(m_module)
                                                                  : QString());
}

void Update::compareAll()
{
    QVector<CrcCheckItem *> units;
    for (Job &job : m_jobs)
        for (CrcCheckItem &unit : job.file.units)
            units.append(&unit);
    transfer::compare(m_module, units, "check");
    // What was sent and is not there any more was overwritten by somebody else, who may have
    // changed what no check covers, too.
    const bool isForeign = std::any_of(m_jobs.begin(), m_jobs.end(), [this](const Job &job) {
        return job.file.kind == Kind::Flash && !differingBlocks(job.file).isEmpty() &&
               m_record.holds(job.file);
    });
    if (isForeign)
        m_record.forgetAll();
}

void Update::plan(Job &job) const
{
    const ProjectFile &file = job.file;
    if (m_choice.all) {
        job.blocks.resize(file.blocks());
        std::iota(job.blocks.begin(), job.blocks.end(), 0);
        job.reason = "everything is sent";
        return;
    }
    job.blocks = differingBlocks(file);
    if (!job.blocks.isEmpty())
        job.reason = placeText(file, job.blocks) + " differed";
    if (file.uncovered == 0)
        return;
    job.trustsRecord = file.kind == Kind::Flash && m_record.holds(file);
    if (job.trustsRecord)
        return;
    const int last = file.blocks() - 1;
    if (!job.blocks.contains(last))
        job.blocks.append(last);
    job.reason += (job.reason.isEmpty() ? "for " : ", and for ") + uncoveredText(file);
}

void Update::sendAll()
{
    for (const Job &job : qAsConst(m_jobs)) {
        if (!job.isSent()) {
            tellUnchanged(job);
        } else if (m_choice.dryRun) {
            tell(job, "differs", job.reason);
        } else {
            // Before, because the exchange may be cut off.
            if (isFlash(job.file.kind))
                m_record.forget(job.file);
            if (job.file.kind == Kind::Os)
                m_record.setAwaitsRestart(true);
            send(job);
            tell(job, "sent", job.reason);
        }
    }
}

void Update::send(const Job &job)
{
    QVector<int> blocks = job.blocks;
    if (isFirstOfMany(job)) {
        sendFirstBlock(job);
        blocks.removeFirst();
    }
    if (!blocks.isEmpty())
        transfer::send(m_module, job.file, blocks, job.file.name);
}

bool Update::isFirstOfMany(const Job &job) const
{
    int all = 0;
    for (const Job &each : m_jobs)
        all += isOverEd2(each.file.kind) ? each.blocks.size() : 0;
    return isOverEd2(job.file.kind) && all > 1 && !m_choice.noVerify && !m_isEd2Tried &&
           job.blocks.first() < job.file.units.size();
}

void Update::sendFirstBlock(const Job &job)
{
    m_isEd2Tried = true;
    Job first = job;
    first.blocks = {job.blocks.first()};
    const QString place = placeText(first.file, first.blocks);
    CrcCheckItem unit = first.file.units.at(first.blocks.first());
    for (const QString &status : QStringList{"sent", "sent again"}) {
        transfer::send(m_module, first.file, first.blocks, {});
        transfer::compare(m_module, {&unit}, {});
        if (unit.isIntact())
            return;
        tell(first, status, status == "sent" ? first.reason : place + " still differed");
    }
    throw Failure{ExitCode::stillDiffers,
                  QString("sent twice, and the module still holds something else: %1 (%2)%3")
                      .arg(job.file.name, placeText(job.file, job.blocks),
                           job.blocks.size() > 1 ? ", of which only the first was sent" : ""),
                  otherModule};
}

bool Update::sendsSystem() const
{
    return std::any_of(m_jobs.begin(), m_jobs.end(),
                       [](const Job &job) { return job.isSent() && job.file.kind == Kind::Os; });
}

bool Update::needsRestart() const
{
    return m_record.awaitsRestart() &&
           std::any_of(m_jobs.begin(), m_jobs.end(),
                       [](const Job &job) { return job.file.kind == Kind::Os; });
}

void Update::restart()
{
    transfer::restart(m_module);
    m_record.setAwaitsRestart(false);
    m_report.detail("the system restarts");
}

bool Update::canCheckSystem()
{
    try {
        for (Job job : m_jobs)
            if (job.file.kind == Kind::Os)
                transfer::compare(m_module, {&job.file.units.first()}, {});
        return true;
    } catch (const Failure &failure) {
        if (failure.code != ExitCode::noAnswer || m_module.links().wasLost())
            throw;
        return false;
    }
}

bool Update::verifyAndRestart()
{
    if (!m_choice.noVerify) {
        if (needsRestart() && !canCheckSystem()) {
            // It took each frame.
            m_report.note("the module cannot check its system before it is restarted");
            restart();
        }
        if (!verify())
            return false;
    }
    if (needsRestart())
        restart();
    return true;
}

bool Update::verify()
{
    QVector<Job> open = m_jobs;
    if (!verifyBlocks(open, "verify")) {
        for (const Job &job : qAsConst(open)) {
            if (!job.isSent())
                continue;
            transfer::send(m_module, job.file, job.blocks, job.file.name);
            tell(job, "sent again", placeText(job.file, job.blocks) + " still differed");
        }
        verifyBlocks(open, "verify again");
    }
    QStringList faults;
    for (int i = 0; i < m_jobs.size(); ++i) {
        if (open.at(i).isSent())
            faults.append(QString("%1 (%2)").arg(open.at(i).file.name,
                                                 placeText(open.at(i).file, open.at(i).blocks)));
        else if (m_jobs.at(i).isSent())
            tellVerified(m_jobs.at(i));
    }
    if (!faults.isEmpty())
        m_report.fail(ExitCode::stillDiffers,
                      "sent twice, and the module still holds something else: " + faults.join(", "),
                      sendsSystem() ? notRestarted : otherModule);
    return faults.isEmpty();
}

bool Update::verifyBlocks(QVector<Job> &jobs, const QString &what)
{
    QVector<CrcCheckItem *> units;
    for (Job &job : jobs)
        for (const int block : qAsConst(job.blocks))
            if (block < job.file.units.size())
                units.append(&job.file.units[block]);
    transfer::compare(m_module, units, what);
    bool isEqual = true;
    for (Job &job : jobs) {
        const auto isDone = [&job](int block) {
            return block >= job.file.units.size() || job.file.units.at(block).isIntact();
        };
        job.blocks.erase(std::remove_if(job.blocks.begin(), job.blocks.end(), isDone),
                         job.blocks.end());
        isEqual = isEqual && !job.isSent();
    }
    return isEqual;
}

void Update::tell(const Job &job, const QString &status, const QString &reason)
{
    QJsonArray blocks;
    for (const int block : job.blocks)
        blocks.append(job.file.number + block);
    QJsonObject json{{"type", "file"},
                     {"file", job.file.name},
                     {"kind", kindName(job.file.kind)},
                     {"number", job.file.number},
                     {"status", status},
                     {"reason", reason}};
    if (job.file.kind == Kind::Flash)
        json.insert("blocks", blocks);
    m_report.result(json, QString("%1 %2: %3").arg(status, -14).arg(job.file.name, reason));
}

void Update::tellUnchanged(const Job &job)
{
    if (!job.trustsRecord)
        tell(job, "unchanged", "the module holds it");
    else if (job.file.units.isEmpty())
        tell(job, "not verifiable", "no check covers it; the file is as it was sent");
    else
        tell(job, "unchanged",
             "the module holds it, but for " + uncoveredText(job.file) +
                 "; these are as they were sent");
}

void Update::tellVerified(const Job &job)
{
    if (job.file.units.isEmpty())
        tell(job, "not verifiable", "no check covers it");
    else if (job.file.uncovered > 0)
        tell(job, "verified", "but for " + uncoveredText(job.file));
    else
        tell(job, "verified", "the module holds it");
}

int Update::finish()
{
    int sent = 0;
    for (const Job &job : qAsConst(m_jobs)) {
        sent += job.isSent() ? 1 : 0;
        // Nothing is remembered of what was not checked as far as it can be.
        if (!m_choice.dryRun && !m_choice.noVerify && job.file.kind == Kind::Flash)
            m_record.remember(job.file);
    }
    m_record.save();
    const QString verdict =
        m_choice.noVerify && sent > 0 ? "; not verified, because of --no-verify" : "";
    m_report.result({{"type", "summary"},
                     {"sent", m_choice.dryRun ? 0 : sent},
                     {"differing", sent},
                     {"unchanged", m_jobs.size() - sent},
                     {"verified", !m_choice.noVerify && !m_choice.dryRun}},
                    QString("%1 %2, %3 unchanged%4")
                        .arg(sent)
                        .arg(m_choice.dryRun ? "would be sent" : "sent")
                        .arg(m_jobs.size() - sent)
                        .arg(verdict));
    return m_choice.dryRun && sent > 0 ? ExitCode::differs : ExitCode::done;
}
