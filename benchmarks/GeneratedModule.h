#pragma once

#ifdef BENCHMARK_WITH_QT

#include <QObject>
#include <QtPlugin>

/// What a plug-in of Qt answers in place of the two entry points.
class GeneratedPluginInterface
{
public:
    virtual ~GeneratedPluginInterface() = default;
    virtual const void *describe() = 0;
    virtual void *create(int id) = 0;
};
#define GENERATED_PLUGIN "benchmarks.GeneratedPlugin"
Q_DECLARE_INTERFACE(GeneratedPluginInterface, GENERATED_PLUGIN)

class GeneratedPlugin : public QObject, public GeneratedPluginInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID GENERATED_PLUGIN)
    Q_INTERFACES(GeneratedPluginInterface)

public:
    const void *describe() override;
    void *create(int id) override;
};

#endif
