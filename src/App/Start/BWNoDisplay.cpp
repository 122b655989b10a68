#include "App/Start/BWNoDisplay.h"

#include <cstdio>
#include <cstdlib>
#include <QByteArray>
#include <QtGlobal>

namespace {

QtMessageHandler handlerBefore = nullptr;

void handle(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type != QtFatalMsg) {
        handlerBefore(type, context, message);
        return;
    }
    QByteArray displays;
    for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY"}) {
        const QByteArray value = qgetenv(name);
        displays += displays.isEmpty() ? "" : ", ";
        displays += QByteArray(name) + (value.isEmpty() ? " is not set" : " is \"" + value + '"');
    }
    std::fprintf(stderr, "brimwellpro: No display to open a window on (%s)\n", displays.constData());
    std::_Exit(1);
}

} // namespace

BWNoDisplay::BWNoDisplay()
{
    handlerBefore = qInstallMessageHandler(&handle);
}

BWNoDisplay::~BWNoDisplay()
{
    qInstallMessageHandler(handlerBefore);
}
