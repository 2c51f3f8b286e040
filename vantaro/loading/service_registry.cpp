#include "vantaro/loading/service_registry.h"

namespace vantaro::core {

void ServiceRegistry::add(ServiceRecord& record) {
    find(record.class_guid())->records.push_back(&record);
}

ServiceClass* ServiceRegistry::find(const Guid& class_guid) {
    const std::lock_guard lock(mutex_);
    return &classes_[class_guid];
}

} // namespace vantaro::core
