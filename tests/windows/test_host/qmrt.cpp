// The test stand-in for QMRT.DLL. Its COM objects lay out their vtables by hand, slot by slot,
// as the host's interfaces are known: the operation source is an IDispatch whose slot 14 hands
// out the recorder; the recorder's slot 11 takes one record.

#define WIN32_LEAN_AND_MEAN
#include <windows.h>
// OLE Automation needs <windows.h> first.
#include <oleauto.h>

#include <string>

#include "test_host/test_host_api.h"

namespace {

std::wstring g_journal;

void Journal(const std::wstring& line) {
    g_journal += line;
    g_journal += L'\n';
}

std::wstring Text(const wchar_t* text) {
    return text == nullptr ? L"(null)" : text;
}

constexpr IID kOperationSourceIid = {
    0x4F224BFE, 0xA12F, 0x49C2, {0x9D, 0x77, 0xB0, 0x76, 0xC6, 0x04, 0x64, 0x5F}};

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

class CountedObject {
  protected:
    ULONG AddReference() { return ++m_references; }
    ULONG ReleaseReference() {
        const ULONG left = --m_references;
        if (left == 0) {
            delete this;
        }
        return left;
    }
    virtual ~CountedObject() = default;

  private:
    ULONG m_references = 1;
};

// IUnknown, eight methods nobody calls (slots 3 to 10), then Record in slot 11.
class Recorder final : public IUnknown, private CountedObject {
  public:
    explicit Recorder(HRESULT answer) : m_answer(answer) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (iid == IID_IUnknown) {
            *object = static_cast<IUnknown*>(this);
            AddRef();
            return S_OK;
        }
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return AddReference(); }
    ULONG STDMETHODCALLTYPE Release() override { return ReleaseReference(); }

    virtual HRESULT STDMETHODCALLTYPE Slot3() { return E_NOTIMPL; }
    virtual HRESULT STDMETHODCALLTYPE Slot4() { return E_NOTIMPL; }
    virtual HRESULT STDMETHODCALLTYPE Slot5() { return E_NOTIMPL; }
    virtual HRESULT STDMETHODCALLTYPE Slot6() { return E_NOTIMPL; }
    virtual HRESULT STDMETHODCALLTYPE Slot7() { return E_NOTIMPL; }
    virtual HRESULT STDMETHODCALLTYPE Slot8() { return E_NOTIMPL; }
    virtual HRESULT STDMETHODCALLTYPE Slot9() { return E_NOTIMPL; }
    virtual HRESULT STDMETHODCALLTYPE Slot10() { return E_NOTIMPL; }
    virtual HRESULT STDMETHODCALLTYPE Record(SAFEARRAY* record, SAFEARRAY** answer) {
        std::wstring line = L"Record ";
        LONG lower = -1;
        VARTYPE type = VT_EMPTY;
        if (record == nullptr || SafeArrayGetDim(record) != 1 ||
            FAILED(SafeArrayGetLBound(record, 1, &lower)) || lower != 0 ||
            FAILED(SafeArrayGetVartype(record, &type)) || type != VT_VARIANT) {
            Journal(L"Record (not a one-dimensional array of VARIANT from 0)");
            return E_INVALIDARG;
        }
        LONG upper = -1;
        SafeArrayGetUBound(record, 1, &upper);
        for (LONG i = 0; i <= upper; ++i) {
            VARIANT element;
            VariantInit(&element);
            SafeArrayGetElement(record, &i, &element);
            line += i == 0 ? L"" : L"|";
            line += element.vt == VT_BSTR
                        ? std::wstring(element.bstrVal, SysStringLen(element.bstrVal))
                        : L"(not a BSTR)";
            VariantClear(&element);
        }
        Journal(line);
        // An answer array, which the caller destroys.
        *answer = SafeArrayCreateVector(VT_VARIANT, 0, 1);
        return m_answer;
    }

  private:
    HRESULT m_answer;
};

// IDispatch (slots 3 to 6), seven methods nobody calls (7 to 13), GetRecorder in slot 14.
class OperationSource final : public IDispatch, private CountedObject {
  public:
    explicit OperationSource(HRESULT recordAnswer) : m_recordAnswer(recordAnswer) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (iid == IID_IUnknown || iid == IID_IDispatch || iid == kOperationSourceIid) {
            *object = static_cast<IDispatch*>(this);
            AddRef();
            return S_OK;
        }
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return AddReference(); }
    ULONG STDMETHODCALLTYPE Release() override { return ReleaseReference(); }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) override {
        return E_NOTIMPL;
    }
    virtual HRESULT STDMETHODCALLTYPE Slot7() { return E_NOTIMPL; }
    virtual HRESULT STDMETHODCALLTYPE Slot8() { return E_NOTIMPL; }
    virtual HRESULT STDMETHODCALLTYPE Slot9() { return E_NOTIMPL; }
    virtual HRESULT STDMETHODCALLTYPE Slot10() { return E_NOTIMPL; }
    virtual HRESULT STDMETHODCALLTYPE Slot11() { return E_NOTIMPL; }
    virtual HRESULT STDMETHODCALLTYPE Slot12() { return E_NOTIMPL; }
    virtual HRESULT STDMETHODCALLTYPE Slot13() { return E_NOTIMPL; }
    virtual HRESULT STDMETHODCALLTYPE GetRecorder(BSTR type, IUnknown** recorder) {
        Journal(L"GetRecorder " + std::wstring(type, SysStringLen(type)));
        *recorder = new Recorder(m_recordAnswer);
        return S_OK;
    }

  private:
    HRESULT m_recordAnswer;
};

#pragma GCC diagnostic pop

}  // namespace

extern "C" {

int32_t __stdcall QmrtLoadString(uint32_t context, const wchar_t* key, wchar_t* buffer,
                                 uint32_t capacity) {
    Journal(L"__LoadString " + std::to_wstring(context) + L" " + Text(key) + L" " +
            std::to_wstring(capacity));
    std::wstring text;
    if (key != nullptr && std::wstring(key) == L"IDS_SITE") {
        text = L"Shop Site";
    } else if (key != nullptr && std::wstring(key) == L"IDS_LONG") {
        text.assign(300, L'x');
    } else {
        return -1;
    }
    if (text.size() + 1 > capacity) {
        return static_cast<int32_t>(text.size());
    }
    text.copy(buffer, text.size());
    buffer[text.size()] = L'\0';
    return 0;
}

int32_t __stdcall QmrtTextSubSubstitute(uint32_t context, BSTR* text) {
    const std::wstring before = *text == nullptr ? L"" : std::wstring(*text, SysStringLen(*text));
    Journal(L"TextSubSubstitute " + std::to_wstring(context) + L" " + before);
    std::wstring after = before;
    const std::wstring marker = L"[INSTALLDIR]";
    for (size_t at = after.find(marker); at != std::wstring::npos; at = after.find(marker, at)) {
        after.replace(at, marker.size(), L"C:\\Shop\\");
    }
    SysFreeString(*text);
    *text = SysAllocStringLen(after.data(), static_cast<UINT>(after.size()));
    return 0;
}

int32_t __stdcall QmrtComponentFileInfo(uint32_t context, const wchar_t* media,
                                        const wchar_t* feature, const wchar_t* component,
                                        uint32_t selector, uint32_t* result, uint32_t reserved) {
    Journal(L"_ComponentFileInfo " + std::to_wstring(context) + L" " + Text(media) + L" " +
            Text(feature) + L" " + Text(component) + L" " + std::to_wstring(selector) + L" " +
            std::to_wstring(*result) + L" " + std::to_wstring(reserved));
    *result = component != nullptr && std::wstring(component) == L"Quiet" ? 0x40 : 0;
    return 0;
}

void __stdcall TestHostReset() {
    g_journal.clear();
}

BSTR __stdcall TestHostJournal() {
    return SysAllocStringLen(g_journal.data(), static_cast<UINT>(g_journal.size()));
}

HRESULT __stdcall TestHostCreateOperations(VARIANT* operations, HRESULT recordResult) {
    VariantInit(operations);
    operations->vt = VT_DISPATCH;
    operations->pdispVal = new OperationSource(recordResult);
    return S_OK;
}

}  // extern "C"
