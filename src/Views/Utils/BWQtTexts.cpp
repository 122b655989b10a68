#include "Views/Utils/BWQtTexts.h"

#include "Utils/BWLogging.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QPointer>
#include <QTranslator>

using namespace Qt::StringLiterals;

void BWQtTexts::setLanguage(const QString &language)
{
    static QPointer<QTranslator> translator;
    delete translator; // which takes it out of use
    if (language.isEmpty() || language == "en"_L1)
        return;
    translator = new QTranslator(QCoreApplication::instance());
    const QString folder = QLibraryInfo::path(QLibraryInfo::TranslationsPath);
    if (translator->load(u"qtbase_"_s + language, folder))
        QCoreApplication::installTranslator(translator);
    else
        qCInfo(bwViews).noquote() << u"Qt's own texts stay English: %1 has none in \"%2\""_s.arg(folder, language);
}
