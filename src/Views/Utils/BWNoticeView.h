// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFont>
#include <QLabel>
#include <QList>
#include <QWidget>

class QDialog;
class QHBoxLayout;
class QPushButton;
class QVBoxLayout;

/// A plain text that the user can select and copy, with the mouse and, as it is in the Tab order, with the keyboard: Tab
/// selects all of it, which also shows where the focus is. GUI thread.
class BWCopyableLabel : public QLabel {
    Q_OBJECT

public:
    explicit BWCopyableLabel(const QString &text = {}, QWidget *parent = nullptr);

protected:
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
};

/// The font of a heading above texts in that font, larger by that factor. Bold, because Japanese fonts seldom have a
/// weight in between.
QFont bwHeadingFont(const QFont &font, double scale);

/// The content of a small window with one message for the user: an illustration on the left; a heading, an explanation
/// and other content on the right; buttons at the bottom right. GUI thread.
class BWNoticeView : public QWidget {
    Q_OBJECT

public:
    explicit BWNoticeView(const QString &illustrationName, QWidget *parent = nullptr);

    /// Makes it all that the dialog shows; the dialog then has its size.
    void fill(QDialog &dialog);

    void setHeading(const QString &heading);
    void setExplanation(const QString &explanation);
    QString explanation() const;

    /// The heading above the explanation of an obstacle.
    void setObstacleHeading(const QString &heading);
    /// Shows the explanation of an obstacle in place of the usual heading and explanation; null shows those again.
    void setObstacle(const QString &explanation);

    /// Adds something below the explanation.
    void addContent(QWidget *widget);
    /// Makes the texts at least as wide as the content. Call it when the content needs more room than before.
    void updateWidth();
    /// Adds a button to the right of those already there.
    QPushButton *addButton();

protected:
    void changeEvent(QEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void updateFonts();
    void updateTexts();

    struct Texts {
        QString heading;
        QString explanation;
    };

    Texts m_usual;
    Texts m_obstacle;
    QLabel *m_heading;
    QLabel *m_explanation;
    QVBoxLayout *m_column;
    QHBoxLayout *m_buttons;
    QList<QWidget *> m_contents;
};

/// The head of a window about the program itself: the program's icon, a large title and lines of text below it. GUI
/// thread.
class BWProgramHead : public QWidget {
    Q_OBJECT

public:
    explicit BWProgramHead(const QString &title, QWidget *parent = nullptr);

    /// Adds a line below the others. The head owns it.
    void addLine(QLabel *line);

protected:
    void changeEvent(QEvent *event) override;

private:
    void updateFonts();

    QLabel *m_title;
    QVBoxLayout *m_texts;
};
