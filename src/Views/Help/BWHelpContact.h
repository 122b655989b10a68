#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>

/// Where people find help with the program.
struct BWHelpContact {
    QUrl faqPage; ///< empty if there is none
    QString supportAddress; ///< for e-mail; null if there is none

    /// Reads a JSON object with "faq_page" (https) and "support_address". What is missing or makes no sense is logged and
    /// left out.
    static BWHelpContact fromFile(const QString &path);
};

/// An e-mail to the support that waits in the user's mail program to be completed and sent.
struct BWSupportMail {
    /// Some mail programs take no longer address than that.
    static constexpr qsizetype maxLength = 2000; // bytes, encoded

    QString address;
    QString subject;
    QString request; ///< what the user is asked to tell
    QStringList facts; ///< one to a line, below the user's own words; the last ones are left out if they are too many

    /// The mailto: address that opens it.
    QUrl url() const;

    /// Operating system, desktop and libraries, in one line of plain English.
    static QString system();
};
