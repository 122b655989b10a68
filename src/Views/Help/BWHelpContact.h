// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>

/// Where people find help with the program.
struct BWHelpContact {
    QUrl faqPage; ///< empty if there is none
    QString supportAddress; ///< for e-mail; null if there is none

    /// Reads a JSON object with "faq_page" (https) and "support_address". Logs and leaves out what is missing or invalid.
    static BWHelpContact fromFile(const QString &path);
};

/// An e-mail to the support, for the user to complete and send in the mail program.
struct BWSupportMail {
    /// Some mail programs accept no longer mailto: address.
    static constexpr qsizetype maxLength = 2000; // bytes, encoded

    QString address;
    QString subject;
    QString request; ///< what the user should describe
    QStringList facts; ///< one to a line, below the user's own words; the last ones are left out if there are too many

    /// The mailto: address that opens it.
    QUrl url() const;

    /// Operating system, desktop and libraries, in one line of plain English.
    static QString system();
};
