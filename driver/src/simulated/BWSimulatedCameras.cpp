#include "BWACUDriver/BWSimulatedCameras.h"

#include "simulated/BWSimulatedMicroscope.h"
#include "simulated/BWSimulatedProfile.h"

#include <algorithm>
#include <array>
#include <map>
#include <QObject>

using namespace Qt::StringLiterals;

namespace {

using Type = BWSimulatedCameraOptions::Type;

struct TypeName {
    Type type;
    const char *name;
};

constexpr std::array typeTable{
    TypeName{Type::DX20, "dx20"},   TypeName{Type::Regular, "regular"},   TypeName{Type::High, "high"},
    TypeName{Type::Ultra, "ultra"}, TypeName{Type::Wireless, "wireless"},
};

class Backend : public BWSimulatedBackend {
public:
    Backend(const QList<BWSimulatedCameraOptions> &cameras, BWClock &clock)
    {
        std::map<Type, int> countOfType;
        for (const BWSimulatedCameraOptions &options : cameras) {
            const QString title = u"%1 %2"_s.arg(BWSimulatedProfile::forType(options.type).description->name)
                                      .arg(++countOfType[options.type]);
            const QString identifier = u"simulated:%1"_s.arg(m_microscopes.size() + 1);
            m_microscopes.append(std::make_shared<BWSimulatedMicroscope>(options, title, identifier, clock));
        }
    }

    ~Backend() override
    {
        for (const auto &microscope : m_microscopes)
            microscope->unwatch();
    }

    void start(const QList<BWCameraDescriptionPtr> &descriptions, Events events) override
    {
        for (const auto &microscope : m_microscopes) {
            const QString &type =
                BWSimulatedProfile::forType(microscope->options().type).description->identifierForCameraType;
            if (std::any_of(descriptions.cbegin(), descriptions.cend(),
                            [&type](const auto &description) { return description->identifierForCameraType == type; }))
                microscope->watch(events, &m_queue);
        }
    }

    bool pendingDevices() const override
    {
        return std::any_of(m_microscopes.cbegin(), m_microscopes.cend(),
                           [](const auto &microscope) { return microscope->isPending(); });
    }

    QList<std::shared_ptr<BWSimulatedCamera>> cameras() const override
    {
        return {m_microscopes.cbegin(), m_microscopes.cend()};
    }

private:
    QObject m_queue; ///< its thread's event loop times the preparation
    QList<std::shared_ptr<BWSimulatedMicroscope>> m_microscopes;
};

} // namespace

std::optional<BWSimulatedCameraOptions::Type> BWSimulatedCameraOptions::typeFromName(const QString &name)
{
    const auto entry = std::find_if(typeTable.begin(), typeTable.end(), [&name](const TypeName &candidate) {
        return name == QLatin1String(candidate.name);
    });
    return entry == typeTable.end() ? std::nullopt : std::optional(entry->type);
}

QStringList BWSimulatedCameraOptions::typeNames()
{
    QStringList names;
    for (const TypeName &entry : typeTable)
        names.append(QLatin1String(entry.name));
    return names;
}

std::unique_ptr<BWSimulatedBackend> BWSimulatedBackend::create(const QList<BWSimulatedCameraOptions> &cameras,
                                                               BWClock &clock)
{
    return std::make_unique<Backend>(cameras, clock);
}
