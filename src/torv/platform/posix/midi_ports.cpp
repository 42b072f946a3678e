#include "torv/platform/posix/midi_ports.h"

#include "torv/platform/immortal.h"

#include <RtMidi.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <mutex>
#include <optional>
#include <string>

namespace {

constexpr const char* kClient = "TORV";

/// Failures are seen by their results; the library's own texts would go to standard error.
void Silent(RtMidiError::Type, const std::string&, void*) {}

/// The system's own interface. JACK is no choice: asking for it speaks on standard error, or starts a server.
std::optional<RtMidi::Api> SystemApi() {
    // Asked once: where this very call has no memory, the library ends the program.
    static const auto compiled = [] {
        std::vector<RtMidi::Api> apis;
        RtMidi::getCompiledApi(apis);
        return apis;
    }();
    for (const RtMidi::Api api : compiled) {
        if (api == RtMidi::LINUX_ALSA) {
            // Looked for here, because a client without a sequencer complains on standard error before it can be
            // silenced.
            const int sequencer = open("/dev/snd/seq", O_RDWR | O_NONBLOCK | O_CLOEXEC);
            if (sequencer < 0)
                continue;
            close(sequencer);
            return api;
        }
        if (api == RtMidi::MACOSX_CORE)
            return api;
    }
    return std::nullopt;
}

std::unique_ptr<RtMidiOut> NewClient() {
    const auto api = SystemApi();
    if (!api)
        return nullptr;
    try {
        auto client = std::make_unique<RtMidiOut>(*api, kClient);
        client->setErrorCallback(&Silent);
        return client;
    } catch (const RtMidiError&) {
        return nullptr;
    }
}

std::vector<std::string> PortNames(RtMidiOut& client) {
    std::vector<std::string> names(client.getPortCount());
    for (unsigned int i = 0; i < names.size(); ++i)
        names[i] = client.getPortName(i);
    return names;
}

/// Ports are known by name: their numbers move when others come and go.
class Port : public torv::MidiOutDevice {
public:
    explicit Port(std::string name) : m_name(std::move(name)) {}
    const char* Name() const override { return m_name.c_str(); }

    bool Open() override {
        m_client = NewClient();
        if (!m_client)
            return false;
        const auto names = PortNames(*m_client);
        const auto found = std::find(names.begin(), names.end(), m_name);
        if (found != names.end())
            m_client->openPort(static_cast<unsigned int>(found - names.begin()), kClient);
        if (m_client->isPortOpen())
            return true;
        m_client.reset();
        return false;
    }
    void Close() override { m_client.reset(); }
    bool ShortMessage(const BYTE* bytes, DWORD count) override { return Send(bytes, count); }
    bool LongMessage(const BYTE* bytes, DWORD count) override { return Send(bytes, count); }

private:
    bool Send(const BYTE* bytes, DWORD count) {
        try {
            m_client->sendMessage(bytes, count);
            return true;
        } catch (const RtMidiError&) {
            return false;
        }
    }

    const std::string m_name;
    std::unique_ptr<RtMidiOut> m_client;
};

} // namespace

std::vector<std::shared_ptr<torv::MidiOutDevice>> torv::SystemMidiPorts() {
    struct Known {
        std::mutex mutex;
        std::unique_ptr<RtMidiOut> client;
        std::vector<std::shared_ptr<MidiOutDevice>> ports;
    };
    auto& [mutex, client, ports] = Immortal<Known>();
    const std::lock_guard lock(mutex);
    if (!client)
        client = NewClient();
    std::vector<std::shared_ptr<MidiOutDevice>> present;
    if (client) {
        for (const std::string& name : PortNames(*client)) {
            const auto known = std::find_if(ports.begin(), ports.end(), [&](const auto& port) {
                return name == port->Name() && std::find(present.begin(), present.end(), port) == present.end();
            });
            present.push_back(known != ports.end() ? *known : std::make_shared<Port>(name));
        }
    }
    ports = present;
    return present;
}
