#include "vantaro/loading/service_registry.h"

namespace vantaro::core {

std::string_view ServiceRegistry::add(ServiceRecord& record, const std::string& component) {
    if (const auto only = only_ones_.find(record.class_guid()); only != only_ones_.end())
        return only->second;
    find(record.class_guid())->records.push_back(&record);
    components_.emplace(&record, component);
    return {};
}

void ServiceRegistry::add_own_record(ServiceBase& service, const Guid& class_guid) {
    own_records_.push_back(std::make_unique<OwnServiceRecord>(service, class_guid));
    find(class_guid)->records.push_back(own_records_.back().get());
}

const std::string& ServiceRegistry::component_of(const ServiceRecord& record) const {
    static const std::string host_itself;
    const auto found = components_.find(&record);
    return found == components_.end() ? host_itself : found->second;
}

ServiceClass* ServiceRegistry::find(const Guid& class_guid) {
    const std::lock_guard lock(mutex_);
    return &classes_[class_guid];
}

} // namespace vantaro::core
