#pragma once

#include <initializer_list>

class QAbstractButton;
class QButtonGroup;
class QObject;

/// An exclusive group of `buttons`, with ids 0, 1, ... in their order; `checkedId` is checked.
QButtonGroup *makeRadioGroup(std::initializer_list<QAbstractButton *> buttons, int checkedId,
                             QObject *parent);
