#include "audio/Mp4TagLibRefusal.h"

#include "audio/TagLibFiles.h"
#include "isobmff/BoxTree.h"

#include <taglib/mp4tag.h>

namespace pelorin::taglib {

QString mp4DamageProblem(const QString& path)
{
    FileByteSource source(path);
    QString error;
    if (!source.open(&error))
        return error;
    const BoxTree tree = readBoxTree(source);
    return tree.clean() ? QString() : tree.problems.first();
}

QString mp4ItemTagLibDrops(const TagLib::MP4::Tag& tag)
{
    for (const auto& [name, item] : tag.itemMap()) {
        // TagLib writes "----:mean:name" back only when it splits into exactly three parts.
        if (name.startsWith("----:") && name.split(":").size() != 3)
            return toQString(name);
    }
    return {};
}

}  // namespace pelorin::taglib
