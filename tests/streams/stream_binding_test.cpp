// What both filters share: binding, identity, lifetime.
#include "stream_binding.h"

#include "outer_object.h"
#include "stream_sides.h"

namespace mirolta::test {
namespace {

template <typename Dual>
class StreamBindingTest : public FilterTest<Dual> {
 protected:
  StreamBindingTest() { this->target.content = PatternBytes(100); }

  HRESULT Get(IUnknown** out) { return this->filter->get_Stream(out); }
};
TYPED_TEST_SUITE(StreamBindingTest, BothFilters);

TYPED_TEST(StreamBindingTest, ANewFilterHasNoStream) {
  IUnknown* out = &this->target;
  EXPECT_EQ(this->Get(&out), kNoStream);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(this->filter->get_Stream(nullptr), E_POINTER);
}

TYPED_TEST(StreamBindingTest, TheStreamReadsBackAsTheObjectGiven) {
  this->Bind();
  EXPECT_EQ(this->target.references, 3);
  IUnknown* out = nullptr;
  EXPECT_EQ(this->Get(&out), S_OK);
  EXPECT_EQ(out, static_cast<IUnknown*>(&this->target));
  EXPECT_EQ(this->target.references, 4);
  out->Release();
}

TYPED_TEST(StreamBindingTest, ASourceBindsItsStreamButReadsBackAsItself) {
  ScriptedSource source;
  source.stream = &this->target;
  EXPECT_EQ(this->filter->putref_Stream(&source), S_OK);
  EXPECT_EQ(source.references, 2);
  EXPECT_EQ(this->target.references, 2);
  IUnknown* out = nullptr;
  EXPECT_EQ(this->Get(&out), S_OK);
  EXPECT_EQ(out, static_cast<IUnknown*>(&source));
  out->Release();
  EXPECT_EQ(this->Stream()->Commit(5), S_OK);
  EXPECT_EQ(this->target.passed, std::vector<std::string>{"Commit 5 0 0"});
  // Leave nothing bound that ends before the filter.
  this->Bind();
  EXPECT_EQ(source.references, 1);
}

TYPED_TEST(StreamBindingTest, ASourceThatFailsLeavesTheFilterUnbound) {
  ScriptedSource source;
  source.stream = &this->target;
  source.status = E_ACCESSDENIED;
  this->Bind();
  EXPECT_EQ(this->filter->putref_Stream(&source), kNoStreamInterface);
  EXPECT_EQ(source.references, 1);
  EXPECT_EQ(this->target.references, 1);
  IUnknown* out = nullptr;
  EXPECT_EQ(this->Get(&out), kNoStream);
}

TYPED_TEST(StreamBindingTest, ASourceThatHandsOutNothingIsBoundWithoutAStream) {
  ScriptedSource source;
  EXPECT_EQ(this->filter->putref_Stream(&source), S_OK);
  IUnknown* out = nullptr;
  EXPECT_EQ(this->Get(&out), S_OK);
  EXPECT_EQ(out, static_cast<IUnknown*>(&source));
  out->Release();
  EXPECT_EQ(this->Stream()->Commit(0), STG_E_REVERTED);
  this->Bind();
}

// A stream that is a source of another one, with hooks for QueryInterface and AddRef.
class StreamAndSource : public ScriptedSource {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    if (on_query) on_query();
    if (own_stream != nullptr && iid == IID_IStream) {
      *out = own_stream;
      own_stream->AddRef();
      return S_OK;
    }
    return ScriptedSource::QueryInterface(iid, out);
  }
  ULONG STDMETHODCALLTYPE AddRef() override {
    if (on_count) on_count();
    return ScriptedSource::AddRef();
  }
  HRESULT STDMETHODCALLTYPE GetStream(IStream** out) override {
    ++asked;
    return ScriptedSource::GetStream(out);
  }
  IStream* own_stream = nullptr;
  int asked = 0;
  std::function<void()> on_query;
  std::function<void()> on_count;
};

TYPED_TEST(StreamBindingTest, AnObjectWithBothInterfacesIsItsOwnStream) {
  ScriptedStream other;
  StreamAndSource both;
  both.own_stream = &this->target;
  both.stream = &other;
  EXPECT_EQ(this->filter->putref_Stream(&both), S_OK);
  EXPECT_EQ(both.asked, 0);
  EXPECT_EQ(this->Stream()->Revert(), S_OK);
  EXPECT_EQ(this->target.passed.size(), 1u);
  EXPECT_TRUE(other.passed.empty());
  this->Bind();
}

TYPED_TEST(StreamBindingTest, TheOldStreamIsReleasedBeforeTheNewObjectIsAsked) {
  this->Bind();
  ScriptedStream other;
  StreamAndSource source;
  source.stream = &other;
  int queries = 0;
  source.on_query = [&] {
    ++queries;
    EXPECT_EQ(this->target.references, 1);
    IUnknown* out = nullptr;
    EXPECT_EQ(this->Get(&out), kNoStream);
  };
  EXPECT_EQ(this->filter->putref_Stream(&source), S_OK);
  EXPECT_EQ(queries, 2);
  this->Bind();
}

// Between the stream and the object: what reads the binding then gets the stream.
TYPED_TEST(StreamBindingTest, ABindingOfAStreamAloneReadsBackAsTheStream) {
  StreamAndSource source;
  source.stream = &this->target;
  int counted = 0;
  source.on_count = [&] {
    // The query counts first, when nothing is bound.
    IUnknown* out = nullptr;
    if (counted++ == 0) {
      EXPECT_EQ(this->Get(&out), kNoStream);
      return;
    }
    EXPECT_EQ(this->Get(&out), S_OK);
    EXPECT_EQ(out, static_cast<IUnknown*>(&this->target));
    if (out != nullptr) out->Release();
  };
  EXPECT_EQ(this->filter->putref_Stream(&source), S_OK);
  EXPECT_EQ(counted, 2);
  source.on_count = nullptr;
  this->Bind();
}

TYPED_TEST(StreamBindingTest, AnObjectWithoutStreamGivesUpTheOldOneToo) {
  this->Bind();
  ScriptedStream other;
  other.is_stream = false;
  EXPECT_EQ(this->filter->putref_Stream(&other), kNoStreamInterface);
  EXPECT_EQ(this->target.references, 1);
  EXPECT_EQ(other.references, 1);
  IUnknown* out = nullptr;
  EXPECT_EQ(this->Get(&out), kNoStream);
  EXPECT_EQ(this->Stream()->Revert(), STG_E_REVERTED);
}

TYPED_TEST(StreamBindingTest, ANullObjectIsRefusedAndTheBindingStays) {
  this->Bind();
  EXPECT_EQ(this->filter->putref_Stream(nullptr), E_POINTER);
  EXPECT_EQ(this->target.references, 3);
  EXPECT_EQ(this->Stream()->Revert(), S_OK);
}

TYPED_TEST(StreamBindingTest, BindingAgainReleasesTheOldStream) {
  ScriptedStream other;
  this->Bind();
  EXPECT_EQ(this->filter->putref_Stream(&other), S_OK);
  EXPECT_EQ(this->target.references, 1);
  EXPECT_EQ(other.references, 3);
  this->Bind();
  EXPECT_EQ(other.references, 1);
}

TYPED_TEST(StreamBindingTest, AFilterThatEndsReleasesBothReferences) {
  ScriptedSource source;
  source.stream = &this->target;
  {
    Filter<TypeParam> ending(&source);
    EXPECT_EQ(source.references, 2);
    EXPECT_EQ(this->target.references, 2);
  }
  EXPECT_EQ(source.references, 1);
  EXPECT_EQ(this->target.references, 1);
}

TYPED_TEST(StreamBindingTest, CodePageStartsAsZeroAndIsKeptUnchecked) {
  LONG value = -7;
  EXPECT_EQ(this->filter->get_codePage(&value), S_OK);
  EXPECT_EQ(value, 0);
  for (const LONG given : {-1, 65001, 0x7FFFFFFF, -2147483647 - 1}) {
    EXPECT_EQ(this->filter->put_codePage(given), S_OK);
    EXPECT_EQ(this->filter->get_codePage(&value), S_OK);
    EXPECT_EQ(value, given);
  }
  EXPECT_EQ(this->filter->get_codePage(nullptr), E_POINTER);
}

TYPED_TEST(StreamBindingTest, ATargetThatRebindsTheFilterLivesUntilItsCallEnds) {
  ScriptedStream other;
  LONG references_inside = 0;
  this->target.on_read = [&] {
    EXPECT_EQ(this->filter->putref_Stream(&other), S_OK);
    references_inside = this->target.references;
  };
  this->Bind();
  EXPECT_EQ(ReadOnce(this->Stream(), 7), Head(this->target.content, 7));
  EXPECT_EQ(references_inside, 2);
  EXPECT_EQ(this->target.references, 1);
  this->Bind();
}

TYPED_TEST(StreamBindingTest, AllInterfacesAreOneObjectWithoutSourceOfStreams) {
  OwnedReference<IUnknown> unknown;
  EXPECT_EQ(unknown.Query(this->Stream(), IID_IUnknown), S_OK);
  for (const IID& iid : {IID_IStream, IID_ISequentialStream}) {
    OwnedReference<IUnknown> stream;
    EXPECT_EQ(stream.Query(unknown.Get(), iid), S_OK);
    EXPECT_EQ(stream.Get(), unknown.Get());
  }
  OwnedReference<IDispatch> dispatch;
  OwnedReference<TypeParam> dual;
  EXPECT_EQ(dispatch.Query(this->Stream(), IID_IDispatch), S_OK);
  EXPECT_EQ(dual.Query(this->Stream(), FilterTraits<TypeParam>::kIid), S_OK);
  EXPECT_EQ(dispatch.Get(), static_cast<IDispatch*>(dual.Get()));
  OwnedReference<ISupportErrorInfo> errors;
  EXPECT_EQ(errors.Query(this->Stream(), IID_ISupportErrorInfo), S_OK);
  EXPECT_EQ(errors->InterfaceSupportsErrorInfo(FilterTraits<TypeParam>::kIid), S_OK);
  EXPECT_EQ(errors->InterfaceSupportsErrorInfo(IID_IStream), S_FALSE);
  void* out = this;
  EXPECT_EQ(this->Stream()->QueryInterface(IID_IToviStreamSource, &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
}

TYPED_TEST(StreamBindingTest, AnAggregatedFilterCountsOnItsOuterObject) {
  OuterObject outer;
  ASSERT_EQ(FilterTraits<TypeParam>::kCreate(&outer, IID_IUnknown,
                                             reinterpret_cast<void**>(outer.inner.Put())),
            S_OK);
  OwnedReference<IStream> stream;
  EXPECT_EQ(stream.Query(&outer, IID_IStream), S_OK);
  EXPECT_EQ(outer.references, 2u);
  OwnedReference<IUnknown> unknown;
  EXPECT_EQ(unknown.Query(stream.Get(), IID_IUnknown), S_OK);
  EXPECT_EQ(unknown.Get(), static_cast<IUnknown*>(&outer));
  OwnedReference<TypeParam> dual;
  EXPECT_EQ(dual.Query(stream.Get(), FilterTraits<TypeParam>::kIid), S_OK);
  EXPECT_EQ(dual->putref_Stream(&this->target), S_OK);
  EXPECT_EQ(ReadOnce(stream.Get(), 5), Head(this->target.content, 5));
  stream.Reset();
  unknown.Reset();
  dual.Reset();
  EXPECT_EQ(outer.references, 1u);
  EXPECT_EQ(outer.inner.Detach()->Release(), 0u);
  EXPECT_EQ(this->target.references, 1);
}

TYPED_TEST(StreamBindingTest, ACreatorRefusesANullResultPointer) {
  EXPECT_EQ(FilterTraits<TypeParam>::kCreate(nullptr, IID_IUnknown, nullptr), E_POINTER);
}

TEST(GetStreamFromObjectTest, GivesTheStreamOfAStreamOrSourceWithItsStatus) {
  ScriptedStream target;
  IStream* stream = &target;
  EXPECT_EQ(GetStreamFromObject(nullptr, &stream), E_POINTER);
  EXPECT_EQ(stream, nullptr);
  EXPECT_EQ(GetStreamFromObject(&target, &stream), S_OK);
  EXPECT_EQ(stream, &target);
  EXPECT_EQ(target.references, 2);
  stream->Release();
  ScriptedSource source;
  source.stream = &target;
  source.status = S_FALSE;
  EXPECT_EQ(GetStreamFromObject(&source, &stream), S_FALSE);
  EXPECT_EQ(stream, &target);
  EXPECT_EQ(source.references, 1);
  stream->Release();
  source.status = E_ABORT;
  EXPECT_EQ(GetStreamFromObject(&source, &stream), E_ABORT);
  EXPECT_EQ(stream, nullptr);
  target.is_stream = false;
  EXPECT_EQ(GetStreamFromObject(&target, &stream), E_NOINTERFACE);
  EXPECT_EQ(target.references, 1);
}

}  // namespace
}  // namespace mirolta::test
