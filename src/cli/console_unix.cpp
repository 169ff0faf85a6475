#include "cli/console.h"

#include <sys/ioctl.h>
#include <unistd.h>

const char *const console::platform = "offscreen";

std::vector<std::string> console::words(int argc, char *argv[])
{
    std::vector<std::string> words;
    for (int i = argc - 1; i > 0; --i)
        words.emplace_back(argv[i]);
    return words;
}

std::string console::encoded(const QString &word)
{
    return word.toLocal8Bit().toStdString();
}

QString console::decoded(const std::string &word)
{
    return QString::fromLocal8Bit(word.c_str());
}

bool console::print(std::FILE *file, const QString &text)
{
    std::fprintf(file, "%s", text.toLocal8Bit().constData());
    std::fflush(file);
    return std::ferror(file) == 0;
}

std::optional<QByteArray> console::readSome(int descriptor)
{
    QByteArray bytes(4096, '\0');
    const ssize_t count = ::read(descriptor, bytes.data(), static_cast<size_t>(bytes.size()));
    return count < 0 ? std::nullopt : std::optional(bytes.left(static_cast<int>(count)));
}

bool console::isTerminal(std::FILE *file)
{
    return isatty(fileno(file)) != 0;
}

int console::columns()
{
    winsize size{};
    const bool tells = ioctl(fileno(stderr), TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return tells ? size.ws_col : 80;
}
