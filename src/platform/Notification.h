#pragma once

#include <QObject>
#include <functional>

// The program's note among those that the desktop shows: one at a time, a newer one in its place. Where no service
// shows such notes, nothing happens. For platform/ alone.
class Notification : public QObject {
    Q_OBJECT

public:
    Notification();

    // `whenPressed` is for its button.
    void Show(const QString& title, const QString& text, const QString& button, std::function<void()> whenPressed);

private slots:
    void Invoked(uint which, const QString& action);

private:
    std::function<void()> pressed;
    uint number = 0; // by which the service knows it
};
