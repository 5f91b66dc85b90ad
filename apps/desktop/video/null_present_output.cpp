#include "video/program_present_output.h"

namespace tarnix {
namespace {

class NullPresentOutput final : public ProgramPresentOutput
{
public:
    QString sinkName() const override { return QStringLiteral("null"); }
    bool open(QString *) override { return true; }
    bool present(const quint8 *, int, int, QSize, QString *) override { return true; }
    void close() override {}
};

} // namespace

std::unique_ptr<ProgramPresentOutput> createNullPresentOutput()
{
    return std::make_unique<NullPresentOutput>();
}

} // namespace tarnix
