#include "ico/ico_preview_page.h"

#include "ui_ico_preview_page.h"

#include "common/file_dialogs.h"
#include "common/notices.h"
#include "common/tool_settings.h"
#include "widgets/wait_cursor.h"

#include <QHeaderView>

namespace {

constexpr int columns = 10;
constexpr int textRowHeight = 25;

/// A cell that asks for its picture when it is painted.
class IconItem final : public QTableWidgetItem
{
public:
    IconItem(const IconPictures &pictures, int index) : m_pictures(pictures), m_index(index) {}

    QVariant data(int role) const override
    {
        return role == Qt::DecorationRole ? m_pictures.picture(m_index)
                                          : QTableWidgetItem::data(role);
    }

private:
    const IconPictures &m_pictures;
    const int m_index;
};

} // namespace

IcoPreviewPage::IcoPreviewPage(const PageContext &context, IcoManager &manager, QWidget *parent)
    : QWidget(parent)
    , m_context(context)
    , m_manager(manager)
    , m_ui(std::make_unique<Ui::IcoPreviewPage>())
{
    m_ui->setupUi(this);
    m_ui->displayPicture->setColumnCount(columns);
    // Ten icons side by side are seen at once.
    m_ui->displayPicture->horizontalHeader()->setDefaultSectionSize(92);
}

IcoPreviewPage::~IcoPreviewPage() = default;

void IcoPreviewPage::on_OpenIcoFile_clicked()
{
    const QString path = m_context.fileDialogs.openFile(m_context.settings.icoFolder(), "*.ICO");
    if (path.isEmpty())
        return;
    if (m_manager.open(path))
        draw();
    else
        m_context.notices.warn(texts::invalidLibrary);
}

void IcoPreviewPage::on_filiterBackColor_clicked()
{
    draw();
}

void IcoPreviewPage::draw()
{
    const QVector<IconRecord> &icons = m_manager.icons();
    if (icons.isEmpty())
        return;
    const WaitCursor busy;
    m_pictures.show(icons, m_ui->filiterBackColor->isChecked());
    QTableWidget &table = *m_ui->displayPicture;
    table.clearContents();
    table.setRowCount((icons.size() + columns - 1) / columns * 2);
    for (int row = 1; row < table.rowCount(); row += 2)
        table.setRowHeight(row, textRowHeight);
    for (int i = 0; i < icons.size(); ++i) {
        const IconRecord &icon = icons.at(i);
        const int row = i / columns * 2;
        const int column = i % columns;
        table.setItem(row, column, new IconItem(m_pictures, i));
        table.setItem(row + 1, column,
                      new QTableWidgetItem(
                          QString("%1:%2*%3").arg(icon.position).arg(icon.width).arg(icon.height)));
    }
}
