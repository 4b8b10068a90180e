#pragma once

#include <QList>
#include <QObject>
#include <QStringList>
#include <QTimer>

#include <deque>

class QWidget;

namespace Qel::Host {

class MainWindow;

/// Opens every screen with data and every dialog, and writes a picture of each. A step is done
/// when the program has come to rest: no query runs and only the expected dialogs are open.
class Tour : public QObject
{
    Q_OBJECT

public:
    Tour(MainWindow &window, const QString &folder);

    void Start();

signals:
    /// At the end; `problem` is empty if every picture was written.
    void Ended(const QString &problem);

private:
    enum class Kind {
        Open,   ///< a screen by its code
        Press,  ///< an action or button that leads to nothing modal, if it is there
        Empty,  ///< an edit
        Choose, ///< from a drop-down list: "list=text of the choice"
        Dialog, ///< an action or control that opens a dialog
        Grab,   ///< a picture of what is in front
        Leave,  ///< the dialog in front
        Close,  ///< the screen
    };
    struct Step
    {
        Kind kind;
        QString name;
    };

    void Plan();
    void Tick();
    bool AtRest();
    void Run(const Step &step);
    QWidget *Front() const;
    void Press(const QString &name, bool required);
    void Empty(const QString &name);
    void Choose(const QString &listAndText);
    void Grab(const QString &file);
    void Finish(const QString &problem);

    MainWindow &window_;
    QString folder_;
    std::deque<Step> steps_;
    QTimer clock_;
    int dialogs_ = 0; ///< open by our doing
    int quietTicks_ = 0;
    int waitedTicks_ = 0;
    bool ended_ = false;
};

} // namespace Qel::Host
