#include "Model/Import/BWPropertyList.h"

#include "Model/Import/BWBinaryPropertyList.h"
#include "Model/Import/BWXmlPropertyList.h"

using namespace Qt::StringLiterals;

std::optional<QVariant> BWPropertyList::read(const QByteArray &bytes, QString &problem)
{
    if (bytes.size() > maximumBytes) {
        problem = u"it is larger than %1 bytes"_s.arg(maximumBytes);
        return std::nullopt;
    }
    return bytes.startsWith("bplist") ? BWBinaryPropertyList::read(bytes, problem)
                                      : BWXmlPropertyList::read(bytes, problem);
}
