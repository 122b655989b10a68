#pragma once

#include <QString>
#include <QUrl>

/// Where people find help with the program.
struct BWHelpContact {
    QUrl faqPage; ///< empty if there is none
    QString supportAddress; ///< for e-mail; null if there is none

    /// Reads a JSON object with "faq_page" (https) and "support_address". What is missing or makes no sense is logged and
    /// left out.
    static BWHelpContact fromFile(const QString &path);
};
