#include "photo/StampFont.h"

#include <QFont>
#include <QFontDatabase>
#include <QStringList>

namespace pelorin {

bool isFontFamilyInstalled(const QString& family)
{
    if (family.trimmed().isEmpty())
        return false;
    return QFontDatabase::families().contains(family.trimmed(), Qt::CaseInsensitive);
}

QString stampFontFamily(const QString& chosenFamily)
{
    if (isFontFamilyInstalled(chosenFamily))
        return chosenFamily.trimmed();
    return QFontDatabase::systemFont(QFontDatabase::GeneralFont).family();
}

}  // namespace pelorin
