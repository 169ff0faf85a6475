#pragma once

#include "cli/project.h"
#include "cli/sent_record.h"

namespace CLI {
class App;
}
class Exchanges;
class Report;

/// Brings files onto the module, as far as it does not hold them already, and tells of every file
/// what was done and why.
class Update
{
public:
    struct Choice
    {
        bool all = false;      ///< also what the module holds already
        bool dryRun = false;   ///< only tell what would be sent
        bool noVerify = false; ///< do not check what was sent

        /// Adds the options that set it, which must outlive `command`.
        void addOptions(CLI::App &command);
    };

    /// With `module`, which was found to be the one that the device names.
    Update(Exchanges &module, Report &report, const QVector<ProjectFile> &files,
           const Choice &choice);

    /// The exit code.
    int run();

private:
    /// A file, and which of its blocks are to be sent.
    struct Job
    {
        ProjectFile file;
        QVector<int> blocks;
        QString reason;
        bool trustsRecord; ///< of the bytes that no check covers

        bool isSent() const { return !blocks.isEmpty(); }
    };

    SentRecord openRecord();
    void compareAll();
    void plan(Job &job) const;
    void sendAll();
    void send(const Job &job);
    /// The first of many blocks over ED2 is checked before the others are sent: the link may lead
    /// to another module.
    void sendFirstBlock(const Job &job);
    bool isFirstOfMany(const Job &job) const;
    /// Checks what was sent, sends once more what still differs, and checks again.
    bool verify();
    bool verifyAndRestart();
    /// Whether the module answers to a question for its system, right or wrong.
    bool canCheckSystem();
    bool sendsSystem() const;
    /// Whether the module is to start with a system that was sent, now or by a run that was cut
    /// off.
    bool needsRestart() const;
    void restart();
    /// Checks the blocks of each job; leaves those in it that still differ, or none.
    bool verifyBlocks(QVector<Job> &jobs, const QString &what);
    void tell(const Job &job, const QString &status, const QString &reason);
    void tellUnchanged(const Job &job);
    void tellVerified(const Job &job);
    int finish();

    Exchanges &m_module;
    Report &m_report;
    const Choice m_choice;
    QVector<Job> m_jobs;
    SentRecord m_record{QString()};
    bool m_isEd2Tried = false;
};
