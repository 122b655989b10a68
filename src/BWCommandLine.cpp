#include "BWCommandLine.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {

QString typeList()
{
    return BWSimulatedCameraOptions::typeNames().join(u", "_s);
}

QString usage()
{
    return u"brimwellpro [--simulate TYPE[=PATH]]... [--technician] [--list-cameras] [--version] [--help]"_s;
}

} // namespace

BWCommandLine BWCommandLine::parse(const QStringList &arguments)
{
    BWCommandLine line;
    const QString simulate = u"--simulate"_s;
    for (qsizetype i = 0; i < arguments.size() && line.error.isNull(); ++i) {
        const QString &argument = arguments[i];
        QString camera;
        if (argument == u"--list-cameras"_s) {
            line.listCameras = true;
            continue;
        }
        if (argument == u"--technician"_s) {
            line.technician = true;
            continue;
        }
        if (argument == u"--version"_s) {
            line.version = true;
            continue;
        }
        if (argument == u"--help"_s || argument == u"-h"_s) {
            line.help = true;
            continue;
        }
        if (argument == simulate && i + 1 < arguments.size()) {
            camera = arguments[++i];
        } else if (argument.startsWith(simulate + u'=')) {
            camera = argument.mid(simulate.size() + 1);
        } else if (argument == simulate) {
            line.error =
                u"--simulate needs a camera type; accepted are %1, each with =PATH if wished"_s.arg(typeList());
            continue;
        } else {
            line.error = u"Unknown option %1; accepted: %2"_s.arg(argument, usage());
            continue;
        }

        const qsizetype equals = camera.indexOf(u'=');
        const QString typeName = equals < 0 ? camera : camera.left(equals);
        const auto type = BWSimulatedCameraOptions::typeFromName(typeName);
        if (!type) {
            line.error = u"Unknown camera type %1; accepted are %2"_s.arg(typeName, typeList());
            continue;
        }
        BWSimulatedCameraOptions options;
        options.type = *type;
        if (equals >= 0) {
            options.path = camera.mid(equals + 1);
            if (!QFileInfo::exists(options.path)) {
                line.error = u"No photo, folder of photos or movie at \"%1\""_s.arg(options.path);
                continue;
            }
        }
        line.simulated.append(options);
    }
    return line;
}

QString BWCommandLine::helpText()
{
    return u"Usage: %1\n"
           "\n"
           "Looks through digital microscopes and examination scopes.\n"
           "\n"
           "  --simulate TYPE[=PATH]  attach a simulated camera; TYPE is one of %2.\n"
           "                          PATH is a photo, a folder of photos or a movie to show\n"
           "                          in place of the specimen. May be given several times.\n"
           "  --technician            show the menu of the technician's tools\n"
           "  --list-cameras          print the attached cameras and what they can do\n"
           "  --version               print the version\n"
           "  --help                  print this text\n"_s.arg(usage(), typeList());
}
