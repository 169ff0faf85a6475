#pragma once

#include "cli/project.h"

#include <QJsonObject>

/// Which files the flash blocks of one module hold, with the time and size that these had: all that
/// is known of bytes that no check covers. Kept in the user's cache folder; losing it costs a few
/// sends.
class SentRecord
{
public:
    /// Of the module with the device ID `id`; without an ID nothing is kept.
    explicit SentRecord(const QString &id);

    /// Whether `file` is as it was when it was sent, and was the last one sent to its blocks.
    bool holds(const ProjectFile &file) const;
    /// `file` was sent, and checked as far as it can be.
    void remember(const ProjectFile &file);
    /// The blocks of `file` are about to be overwritten; kept at once.
    void forget(const ProjectFile &file);
    /// Whether an operating system was sent that the module has not been restarted with; kept at
    /// once.
    bool awaitsRestart() const;
    void setAwaitsRestart(bool awaits);
    /// Somebody else has changed the blocks.
    void forgetAll();
    void save() const;

private:
    QString m_path;
    QJsonObject m_files; ///< by the number of the block; and what awaits a restart
};
