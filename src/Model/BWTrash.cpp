#include "Model/BWTrash.h"

#include "Utils/BWFilePath.h"

#include <gio/gio.h>

bool BWTrash::moveToTrash(const QUrl &file, QString *error)
{
    GFile *const target = g_file_new_for_path(BWFilePath::native(file).constData());
    GError *failure = nullptr;
    const bool moved = g_file_trash(target, nullptr, &failure);
    if (failure) {
        if (error)
            *error = QString::fromUtf8(failure->message);
        g_error_free(failure);
    }
    g_object_unref(target);
    return moved;
}
