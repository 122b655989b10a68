// Makes the mistake that its argument names; each must end the program.

#include "Model/BWConfigManager.h"
#include "Model/BWLocalizationManager.h"
#include "Model/BWSettingsFile.h"

#include <cstdio>
#include <QTemporaryDir>
#include <sys/resource.h>

using namespace Qt::StringLiterals;

namespace {

struct Meddler : BWConfigManagerListener {
    Meddler *other = nullptr;
    bool add = false;

    void configManagerUpdatedSettings(BWConfigManager &manager) override
    {
        if (add)
            manager.addListener(other);
        else
            manager.removeListener(this);
    }
};

void meddle(bool add)
{
    QTemporaryDir dir;
    BWSettingsFile defaults(dir.filePath(u"settings.conf"_s));
    BWConfigManager manager(defaults);
    Meddler other;
    Meddler meddler;
    meddler.add = add;
    meddler.other = &other;
    manager.addListener(&meddler);
    manager.setFirstTime(false);
}

} // namespace

int main(int argc, char *argv[])
{
    const rlimit noCoreFile{0, 0};
    setrlimit(RLIMIT_CORE, &noCoreFile);
    const QLatin1String mistake(argc > 1 ? argv[1] : "");
    BWLocalizationManager texts(u":/none"_s, {u"de"_s});
    if (mistake == "no parent"_L1)
        texts.text(QString(), u"identifier"_s, u"value"_s);
    else if (mistake == "no identifier"_L1)
        texts.text(u"parent"_s, QString(), u"value"_s);
    else if (mistake == "no value"_L1)
        texts.text(u"parent"_s, u"identifier"_s, QString());
    else if (mistake == "add listener"_L1)
        meddle(true);
    else if (mistake == "remove listener"_L1)
        meddle(false);
    std::puts("still running");
    return 0;
}
