#include "vantaro/services/digest.h"

#include <QCryptographicHash>

#include <algorithm>

namespace vantaro::core {

namespace {

class Md5State final : public HeapService<DigestState> {
public:
    void process(const void* data, std::size_t length) override {
        hash_.addData(QByteArrayView(static_cast<const char*>(data), static_cast<qsizetype>(length)));
    }
    Guid result() override {
        const QByteArray bytes = hash_.result();
        Guid digest;
        std::copy(bytes.begin(), bytes.end(), digest.bytes.begin());
        return digest;
    }

private:
    QCryptographicHash hash_{QCryptographicHash::Md5};
};

} // namespace

DigestState* Md5Service::initialise() {
    return make_service<Md5State>().detach();
}

Guid Md5Service::digest(const void* data, std::size_t length) {
    Md5State state;
    state.process(data, length);
    return state.result();
}

} // namespace vantaro::core
