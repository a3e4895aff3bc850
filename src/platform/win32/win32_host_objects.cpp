#include "platform/win32/win32_host_objects.h"

#include "platform/win32/com_error.h"
#include "platform/win32/com_values.h"

namespace webrig::win32 {
namespace {

constexpr IID kOperationSourceIid = {
    0x4F224BFE, 0xA12F, 0x49C2, {0x9D, 0x77, 0xB0, 0x76, 0xC6, 0x04, 0x64, 0x5F}};

// Slots counted from the start of the vtable, IUnknown's three and IDispatch's four included.
constexpr size_t kGetRecorderSlot = 14;
constexpr size_t kRecordSlot = 11;

using GetRecorderMethod = HRESULT(STDMETHODCALLTYPE*)(IUnknown* self, BSTR operationType,
                                                      IUnknown** recorder);
using RecordMethod = HRESULT(STDMETHODCALLTYPE*)(IUnknown* self, SAFEARRAY* record,
                                                 SAFEARRAY** answer);

template <class Method>
Method MethodInSlot(IUnknown* object, size_t slot) noexcept {
    void* const* vtable = *reinterpret_cast<void* const* const*>(object);
    return reinterpret_cast<Method>(vtable[slot]);
}

class SafeArrayOwner {
  public:
    explicit SafeArrayOwner(SAFEARRAY* array) noexcept : m_array(array) {}
    ~SafeArrayOwner() {
        if (m_array != nullptr) {
            ::SafeArrayDestroy(m_array);
        }
    }
    SafeArrayOwner(const SafeArrayOwner&) = delete;
    SafeArrayOwner& operator=(const SafeArrayOwner&) = delete;
    SAFEARRAY* get() const noexcept { return m_array; }

  private:
    SAFEARRAY* m_array;
};

class OperationRecorder final : public platform::IOperationRecorder {
  public:
    explicit OperationRecorder(ComPtr<IUnknown> recorder) : m_recorder(std::move(recorder)) {}

    qm::hresult RecordOperation(std::span<const qm::wstring> record) override {
        const SafeArrayOwner array(
            ::SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(record.size())));
        if (array.get() == nullptr) {
            throw qm::safe_array_exception();
        }
        VARIANT* elements = nullptr;
        HRESULT hr = ::SafeArrayAccessData(array.get(), reinterpret_cast<void**>(&elements));
        if (FAILED(hr)) {
            throw ComError(hr);
        }
        for (size_t i = 0; i < record.size(); ++i) {
            ScopedBstr text(record[i]);
            if (text.Failed()) {
                ::SafeArrayUnaccessData(array.get());
                throw qm::com_exception(qm::hr::out_of_memory);
            }
            elements[i].vt = VT_BSTR;
            elements[i].bstrVal = text.release();  // the array frees it
        }
        ::SafeArrayUnaccessData(array.get());

        SAFEARRAY* answer = nullptr;
        hr = MethodInSlot<RecordMethod>(m_recorder.get(), kRecordSlot)(m_recorder.get(),
                                                                       array.get(), &answer);
        if (FAILED(hr)) {
            return hr;
        }
        if (answer != nullptr) {
            if (const HRESULT destroyed = ::SafeArrayDestroy(answer); FAILED(destroyed)) {
                throw ComError(destroyed);
            }
        }
        return hr;
    }

  private:
    ComPtr<IUnknown> m_recorder;
};

class OperationSource final : public platform::IHostOperationSource {
  public:
    explicit OperationSource(ComPtr<IUnknown> source) : m_source(std::move(source)) {}

    qm::hresult GetOperationRecorder(
        qm::wstring_view operationType,
        std::shared_ptr<platform::IOperationRecorder>& recorder) override {
        recorder.reset();
        const ScopedBstr type(operationType);
        if (type.Failed()) {
            return qm::hr::out_of_memory;
        }
        ComPtr<IUnknown> answer;
        const HRESULT hr = MethodInSlot<GetRecorderMethod>(m_source.get(), kGetRecorderSlot)(
            m_source.get(), type.get(), answer.receive());
        if (SUCCEEDED(hr) && answer) {
            recorder = std::make_shared<OperationRecorder>(std::move(answer));
        }
        return hr;
    }

  private:
    ComPtr<IUnknown> m_source;
};

}  // namespace

qm::hresult Win32HostObjects::OperationSourceFrom(
    void* operations, std::shared_ptr<platform::IHostOperationSource>& source) {
    source.reset();
    if (operations == nullptr) {
        return qm::hr::pointer;
    }
    IDispatch* const dispatch = static_cast<VARIANT*>(operations)->pdispVal;
    if (dispatch == nullptr) {
        return qm::hr::pointer;
    }
    ComPtr<IUnknown> found;
    const HRESULT hr =
        dispatch->QueryInterface(kOperationSourceIid, reinterpret_cast<void**>(found.receive()));
    if (FAILED(hr)) {
        return hr;
    }
    source = std::make_shared<OperationSource>(std::move(found));
    return qm::hr::ok;
}

}  // namespace webrig::win32
