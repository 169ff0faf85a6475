#pragma once

#include <QByteArray>
#include <QVector>

/// Frames of one kind that go out one behind the other, some of them at a time.
class FrameTrain
{
public:
    /// Takes `frames` in place of the others. The window sends all at once; strict, few enough go
    /// that a lost answer costs little, and enough that an answer that is late does.
    void load(QVector<QByteArray> frames, bool isStrict)
    {
        m_frames = std::move(frames);
        m_atOnce = isStrict ? 8 : m_frames.size();
        m_begin = 0;
        m_end = 0;
    }
    void clear() { load({}, false); }

    /// The bytes of the next ones.
    QByteArray take()
    {
        m_begin = m_end;
        m_end = qMin(m_begin + m_atOnce, m_frames.size());
        QByteArray bytes;
        for (int i = m_begin; i < m_end; ++i)
            bytes += m_frames.at(i);
        return bytes;
    }
    /// How many were taken last.
    int taken() const { return m_end - m_begin; }
    int sent() const { return m_end; }
    /// These are the next ones once more.
    void putBack() { m_end = m_begin; }
    bool isAtEnd() const { return m_end == m_frames.size(); }

    /// What falls to those taken last of something that all frames come to.
    int shareOf(int all) const
    {
        return m_frames.isEmpty() ? all : static_cast<int>(qint64{all} * taken() / m_frames.size());
    }

private:
    QVector<QByteArray> m_frames;
    int m_atOnce = 0;
    int m_begin = 0;
    int m_end = 0;
};
