// Drives the modal colour dialog that a colour button of the preferences dialog opens: the next
// QColorDialog to appear is given a colour and closed with OK, or cancelled.
#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QColorDialog>
#include <QTimer>

// Clicks `button` and answers the colour dialog it opens with `colour` (or cancels it when
// `colour` is invalid). False if no colour dialog, or one without an alpha channel, came up.
inline bool chooseColour(QAbstractButton *button, QColor const &colour)
{
    bool seen = false;
    QTimer::singleShot(0, [&]() {
        auto *dialog = qobject_cast<QColorDialog *>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        seen = dialog->testOption(QColorDialog::ShowAlphaChannel);
        if (colour.isValid()) {
            dialog->setCurrentColor(colour);
            dialog->accept();
        } else {
            dialog->reject();
        }
    });
    button->click();
    return seen;
}
