// Feeds arbitrary bytes to the plan reader. Whatever it accepts must survive its own round trip.

#include "platform/plan/base.h"
#include "platform/plan/factory.h"

#include <QString>

#include <cstdint>
#include <cstdlib>
#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), int(size));
    std::unique_ptr<TWB::Info::Plan::Base> plan(TWB::Info::Plan::Factory::create(text));
    if (!plan)
        return 0;
    const QString written = plan->toXml();
    std::unique_ptr<TWB::Info::Plan::Base> again(TWB::Info::Plan::Factory::create(written));
    if (!again || *again != *plan || again->toXml() != written)
        std::abort();
    return 0;
}
