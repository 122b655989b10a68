#pragma once

#include <functional>
#include <QString>

/// Whether the program may use cameras.
class BWCameraAuthorization {
public:
    /// The numbers are those under which desktops know these states.
    enum class Status { NotDetermined = 0, Restricted = 1, Denied = 2, Authorized = 3 };

    virtual ~BWCameraAuthorization() = default;

    virtual Status authorizationStatus() const = 0;
    /// Asks the user; called only where nothing is determined yet. The answer comes later, on any thread.
    virtual void requestAccess(std::function<void(bool granted)> completion) = 0;
};

/// Access to the device nodes of cameras: denied if there are some and none may be opened.
class BWDeviceNodeAuthorization : public BWCameraAuthorization {
public:
    /// `folder` holds the device nodes, named video0, video1 and so on.
    explicit BWDeviceNodeAuthorization(QString folder);

    Status authorizationStatus() const override;
    void requestAccess(std::function<void(bool granted)> completion) override;

private:
    QString m_folder;
};
