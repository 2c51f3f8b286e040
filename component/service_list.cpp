#include "component/service_list.h"

namespace quorvex {

namespace {

constinit vantaro::ServiceRecord* head = nullptr;

} // namespace

vantaro::ServiceRecord* service_list_head() {
    return head;
}

LinkedServiceRecord::LinkedServiceRecord(const vantaro::Guid& class_guid) : ServiceRecord(head, class_guid) {
    head = this;
}

} // namespace quorvex
