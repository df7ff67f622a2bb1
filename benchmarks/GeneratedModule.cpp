/// The pattern of the measured module libraries: of usual size, its id and name are filled in by modules.py.
/// Built as module libraries usually are, without the settings of vqm_add_module(); with QtCore it is a
/// plug-in of Qt as well.

#include "benchmarks/GeneratedModule.h"

#include "registry/VQMModule.h"

#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

template <int number>
class Part
{
public:
    virtual ~Part() = default;
    virtual void add(int value)
    {
        if (value < number)
            throw std::out_of_range("part " + std::to_string(number));
        texts.push_back(std::to_string(value * number) + " volts");
    }
    virtual std::string joined(char separator) const
    {
        std::string all;
        for (const std::string &text : texts)
            all.append(text).push_back(separator);
        return all;
    }
    virtual std::map<std::string, int> counted() const
    {
        std::map<std::string, int> counts;
        for (const std::string &text : texts)
            ++counts[text];
        return counts;
    }
    virtual double read(const std::string &text)
    {
        std::istringstream stream(text);
        double value = number;
        stream >> value;
        return value;
    }

    std::vector<std::string> texts;
};

class GeneratedModule final : public Orvia::VQMModule<>
{
public:
    using VQMModule::VQMModule;
    int initialize(Orvia::VQMAnchorInterface *, int) override
    {
        m_ready = true;
        return 0;
    }
    void terminate(Orvia::VQMAnchorInterface *) override { m_ready = false; }
    /// So that nothing above is left out of the library.
    virtual std::string everything() { return use<1>() + use<2>() + use<3>() + use<4>() + use<5>(); }

private:
    template <int number>
    std::string use()
    {
        const auto part = std::make_shared<Part<number>>();
        part->add(static_cast<int>(part->read("7")) + static_cast<int>(part->counted().size()));
        return part->joined(' ');
    }

    bool m_ready = false;
};

} // namespace

extern "C" const Orvia::VQMModuleInfo *VQMGetModuleInfo()
{
    static constexpr Orvia::VQMModuleInfo info = {
        {0, 0}, 1, 0, 0, BENCHMARK_NAME, BENCHMARK_ID, Orvia::VQMBaseModule, 0, 0xFFFFFFFF};
    return &info;
}

extern "C" Orvia::VQMModuleInterface *VQMCreateModuleInterfaceInstance(int id)
{
    return new GeneratedModule(id);
}

#ifdef BENCHMARK_WITH_QT
const void *GeneratedPlugin::describe()
{
    return VQMGetModuleInfo();
}

void *GeneratedPlugin::create(int id)
{
    return VQMCreateModuleInterfaceInstance(id);
}
#endif
