#include "cli/console.h"

#include <io.h>
#include <windows.h>

#include <shellapi.h>

namespace {

HANDLE handleOf(std::FILE *file)
{
    return reinterpret_cast<HANDLE>(::_get_osfhandle(::_fileno(file)));
}

} // namespace

const char *const console::platform = "windows";

std::vector<std::string> console::words(int /*argc*/, char * /*argv*/[])
{
    // The words of main() lack all that the system's code page lacks.
    int count = 0;
    wchar_t **all = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    std::vector<std::string> words;
    for (int i = count - 1; i > 0; --i)
        words.push_back(QString::fromWCharArray(all[i]).toStdString());
    ::LocalFree(all);
    return words;
}

std::string console::encoded(const QString &word)
{
    return word.toStdString();
}

QString console::decoded(const std::string &word)
{
    return QString::fromUtf8(word.c_str());
}

bool console::print(std::FILE *file, const QString &text)
{
    DWORD mode = 0;
    if (::GetConsoleMode(handleOf(file), &mode)) {
        const std::wstring all = text.toStdWString();
        DWORD written = 0;
        return ::WriteConsoleW(handleOf(file), all.data(), static_cast<DWORD>(all.size()), &written,
                               nullptr);
    }
    std::fprintf(file, "%s", text.toLocal8Bit().constData());
    std::fflush(file);
    return std::ferror(file) == 0;
}

std::optional<QByteArray> console::readSome(int descriptor)
{
    QByteArray bytes(4096, '\0');
    const int count = ::_read(descriptor, bytes.data(), static_cast<unsigned>(bytes.size()));
    return count < 0 ? std::nullopt : std::optional(bytes.left(count));
}

bool console::isTerminal(std::FILE *file)
{
    DWORD mode = 0;
    return ::GetConsoleMode(handleOf(file), &mode) &&
           ::SetConsoleMode(handleOf(file), mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

int console::columns()
{
    CONSOLE_SCREEN_BUFFER_INFO screen{};
    return ::GetConsoleScreenBufferInfo(handleOf(stderr), &screen)
               ? screen.srWindow.Right - screen.srWindow.Left + 1
               : 80;
}
