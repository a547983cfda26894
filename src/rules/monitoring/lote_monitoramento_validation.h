// The rules of a monitoring lot: its limit, and the levels above the fields of its guides.
#pragma once

#include "rules/monitoring/campo_validation.h"

namespace conferix {

/// The standard's limit of 10,000 guides a lot.
class TLoteAteDezMilGuias : public TValidation {
  public:
    using TValidation::Visit;
    void Visit(const IMonitoramento& monitoramento) override;
};

/// All field rules of a guide; visited with a file, it goes through the guides.
class TGuiaDoLoteValidation : public TGuiaMonitoramentoBaseValidation {
  public:
    using TGuiaMonitoramentoBaseValidation::TGuiaMonitoramentoBaseValidation;
    using TValidation::Visit;
    void Visit(const IMonitoramento& monitoramento) override;
};

/// All rules of a lot; reads from its header what the rules of a guide compare with.
class TLoteMonitoramentoValidation : public TRunRule {
  public:
    using TRunRule::TRunRule;
    using TValidation::Visit;
    void Visit(const IMonitoramento& monitoramento) override;
};

} // namespace conferix
