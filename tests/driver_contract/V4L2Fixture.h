// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Contract.h"

#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWV4L2Backend.h"

#include <memory>

/// A camera of the running kernel.
class V4L2Fixture : public BackendFixture {
public:
    /// `nodeName` is what its driver calls it.
    explicit V4L2Fixture(QString nodeName) : m_nodeName(std::move(nodeName)) { }

    QString name() const override { return m_nodeName; }
    BWCameraDescriptionPtr description() const override
    {
        return BWCameraDetector::descriptionForUltraResolutionMicroscope();
    }
    std::unique_ptr<BWCameraBackend> makeBackend(bool attached) override
    {
        if (attached)
            plugIn();
        else
            unplug();
        return BWV4L2Backend::create({});
    }
    /// Another open file of the node takes the buffers, as a program that streams does.
    void setInUse(bool inUse) override;
    int moreThanAllBuffers() const override { return 20; }

private:
    struct Holder {
        int descriptor;
        ~Holder();
    };

    const QString m_nodeName;
    std::unique_ptr<Holder> m_holder;
};
