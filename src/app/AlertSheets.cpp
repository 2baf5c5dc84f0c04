#include "app/AlertSheets.h"

#include <QMessageBox>
#include <QPushButton>

namespace pelorin {

void showAlertSheet(QWidget* window, const Alert& alert)
{
    auto* box = new QMessageBox(window);
    box->setObjectName(QStringLiteral("alertSheet"));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setIcon(QMessageBox::Warning);
    box->setWindowTitle(alert.message);
    box->setText(alert.message);
    box->setInformativeText(alert.informativeText);
    box->addButton(QStringLiteral(" Ok "), QMessageBox::AcceptRole);
    box->setWindowModality(Qt::WindowModal);
    box->open();
}

bool confirmExit(QWidget* window)
{
    QMessageBox box(window);
    box.setObjectName(QStringLiteral("exitAlert"));
    box.setIcon(QMessageBox::Question);
    box.setWindowTitle(QStringLiteral("Quorvane Pelorin"));
    box.setText(QStringLiteral("Are you sure you want to Exit ?"));
    box.setInformativeText(QString());
    QPushButton* exitButton = box.addButton(QStringLiteral(" Exit "), QMessageBox::AcceptRole);
    box.addButton(QStringLiteral("Cancel"), QMessageBox::RejectRole);
    box.setDefaultButton(exitButton);
    box.exec();
    return box.clickedButton() == exitButton;
}

}  // namespace pelorin
