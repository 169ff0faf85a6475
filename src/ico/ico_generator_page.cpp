#include "ico/ico_generator_page.h"

#include "ui_ico_generator_page.h"

#include "common/file_dialogs.h"
#include "common/notices.h"
#include "common/picture.h"
#include "common/tool_settings.h"
#include "widgets/drop_target.h"
#include "widgets/wait_cursor.h"

#include <QDir>

namespace {

/// More names than these do not fit into a box.
constexpr int maxNames = 20;

} // namespace

IcoGeneratorPage::IcoGeneratorPage(const PageContext &context, IcoManager &manager, QWidget *parent)
    : QWidget(parent)
    , m_context(context)
    , m_manager(manager)
    , m_ui(std::make_unique<Ui::IcoGeneratorPage>())
{
    m_ui->setupUi(this);
    m_ui->ICOFileTable->setColumnWidth(1, 400);
    new DropTarget(*m_ui->ICOFileTable, [this](const QStringList &paths) {
        const QStringList files = matching(paths, picture::filePatterns);
        if (QFileInfo(paths.first()).isDir())
            loadFolder(paths.first());
        else if (!files.isEmpty())
            load(files);
    });
    // Until pictures are loaded there is nothing to write.
    for (QPushButton *button : {m_ui->creatIcoFile, m_ui->addIcoFile, m_ui->replaceIcoFile})
        button->setEnabled(false);
}

IcoGeneratorPage::~IcoGeneratorPage() = default;

void IcoGeneratorPage::on_selectIcoPath_clicked()
{
    const QString folder =
        m_context.fileDialogs.openFolder("请选择需要转换图片路径", m_context.settings.icoFolder());
    if (!folder.isEmpty())
        loadFolder(folder);
}

void IcoGeneratorPage::loadFolder(const QString &folder)
{
    m_ui->filePathLabel->setText(folder);
    m_context.settings.rememberIcoPath(folder);
    if (const auto paths = IcoManager::picturesIn(folder))
        load(*paths);
}

void IcoGeneratorPage::on_selectIcoFilePath_clicked()
{
    const QStringList paths =
        m_context.fileDialogs.openFiles(m_context.settings.imageFolder(), picture::filePatterns);
    if (!paths.isEmpty())
        load(paths);
}

void IcoGeneratorPage::on_creatIcoFile_clicked()
{
    const QString path = m_context.fileDialogs.saveFile(m_context.settings.icoFolder(), "*.ICO");
    write(path, [&] { return m_manager.create(path); });
}

void IcoGeneratorPage::on_addIcoFile_clicked()
{
    const QString path = m_context.fileDialogs.openFile(m_context.settings.icoFolder(), "*.ICO");
    write(path, [&] { return m_manager.add(path); });
}

void IcoGeneratorPage::on_replaceIcoFile_clicked()
{
    const QString path = m_context.fileDialogs.openFile(m_context.settings.icoFolder(), "*.ICO");
    write(path, [&] { return m_manager.replace(path); });
}

void IcoGeneratorPage::write(const QString &path,
                             const std::function<IcoManager::Outcome()> &change)
{
    if (path.isEmpty())
        return;
    const IcoManager::Outcome outcome = [&change] {
        const WaitCursor busy;
        return change();
    }();
    if (outcome == IcoManager::Outcome::Invalid) {
        m_context.notices.warn(texts::invalidLibrary);
        return;
    }
    if (outcome == IcoManager::Outcome::TooLarge) {
        m_context.notices.warn(texts::libraryTooLarge);
        return;
    }
    // A file that cannot be written is told like one that was. That is wanted.
    const QStringList misplaced = m_manager.misplaced();
    if (!misplaced.isEmpty()) {
        const QString more = misplaced.size() > maxNames ? "\n..." : "";
        m_context.notices.warn(texts::misplacedPictures, nullptr,
                               misplaced.mid(0, maxNames).join('\n') + more);
    }
    m_context.notices.warn(texts::libraryFinished);
}

void IcoGeneratorPage::load(const QStringList &paths)
{
    const WaitCursor busy;
    m_manager.load(paths);
    const QVector<IcoManager::Picture> &pictures = m_manager.pictures();
    m_ui->ICOFileTable->setRowCount(pictures.size());
    for (int row = 0; row < pictures.size(); ++row) {
        const IcoManager::Picture &picture = pictures.at(row);
        const QString size = QString("%1*%2").arg(picture.size.width()).arg(picture.size.height());
        m_ui->ICOFileTable->setVerticalHeaderItem(row, new QTableWidgetItem(QString::number(row)));
        int column = 0;
        for (const QString &text : {picture.position, picture.name, size})
            m_ui->ICOFileTable->setItem(row, column++, new QTableWidgetItem(text));
    }
    for (QPushButton *button : {m_ui->creatIcoFile, m_ui->addIcoFile, m_ui->replaceIcoFile})
        button->setEnabled(true);
}
