// SPDX-License-Identifier: GPL-3.0-or-later
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

/// For simulated cameras, which are there to be used without any device.
class BWNoAuthorizationNeeded : public BWCameraAuthorization {
public:
    Status authorizationStatus() const override { return Status::Authorized; }
    void requestAccess(std::function<void(bool granted)> completion) override { completion(true); }
};

/// Access to the device nodes of cameras.
///
/// | Status        |                                                                                              |
/// |---------------|----------------------------------------------------------------------------------------------|
/// | Authorized    | a camera may be opened for reading and writing, or none is attached: one may come later       |
/// | Denied        | there are cameras, and the user's permissions are not enough for any                         |
/// | Restricted    | the permissions are enough, but a policy forbids it, as in a container without the devices   |
/// | NotDetermined | never: there is nobody to ask                                                                |
class BWDeviceNodeAuthorization : public BWCameraAuthorization {
public:
    /// Opens a node for reading and writing and closes it again; answers 0 or the errno number.
    using OpenNode = std::function<int(const QString &path)>;

    /// `folder` holds the device nodes, named video0, video1 and so on, and `classFolder` a folder of the same name for
    /// each, with what the node is for. An unknown kind counts as a camera.
    explicit BWDeviceNodeAuthorization(QString folder, QString classFolder = QStringLiteral("/sys/class/video4linux"),
                                       OpenNode openNode = {});

    Status authorizationStatus() const override;
    void requestAccess(std::function<void(bool granted)> completion) override;

private:
    bool isCamera(const QString &name) const;

    QString m_folder;
    QString m_classFolder;
    OpenNode m_openNode;
};
