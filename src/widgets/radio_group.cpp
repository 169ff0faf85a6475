#include "widgets/radio_group.h"

#include <QAbstractButton>
#include <QButtonGroup>

QButtonGroup *makeRadioGroup(std::initializer_list<QAbstractButton *> buttons, int checkedId,
                             QObject *parent)
{
    auto *group = new QButtonGroup(parent);
    for (QAbstractButton *button : buttons)
        group->addButton(button, group->buttons().size());
    group->button(checkedId)->setChecked(true);
    return group;
}
