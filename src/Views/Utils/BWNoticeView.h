#pragma once

#include <QList>
#include <QWidget>

class QHBoxLayout;
class QLabel;
class QPushButton;
class QVBoxLayout;

/// The inside of a small window that tells the user one thing: an illustration on the left; a heading, an explanation
/// and whatever else there is to show on the right; buttons at the bottom right. GUI thread.
class BWNoticeView : public QWidget {
    Q_OBJECT

public:
    explicit BWNoticeView(const QString &illustrationName, QWidget *parent = nullptr);

    void setHeading(const QString &heading);
    void setExplanation(const QString &explanation);
    QString explanation() const;

    /// What stands above the explanation of an obstacle.
    void setObstacleHeading(const QString &heading);
    /// Shows the explanation of an obstacle in place of the usual heading and explanation; null: shows those again.
    void setObstacle(const QString &explanation);

    /// Adds something below the explanation.
    void addContent(QWidget *widget);
    /// Makes the texts at least as wide as that. To be called when it needs more room than before.
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
