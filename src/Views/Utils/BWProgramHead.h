#pragma once

#include <QWidget>

class QLabel;
class QVBoxLayout;

/// The head of a window that is about the program itself: the program's icon, a title in large letters, and lines of
/// text below it. GUI thread.
class BWProgramHead : public QWidget {
    Q_OBJECT

public:
    explicit BWProgramHead(const QString &title, QWidget *parent = nullptr);

    /// Below those already there. The head owns it.
    void addLine(QLabel *line);

protected:
    void changeEvent(QEvent *event) override;

private:
    void updateFonts();

    QLabel *m_title;
    QVBoxLayout *m_texts;
};
