// What handles lend: the object and its parts, only for as long as somebody keeps the handle.
#include "ling/testing.h"

namespace ling {
namespace {

using namespace testing;

// What a temporary handle must not lend. A requirement, not a call: what is refused does not compile.
template <class H>
concept lends_object = requires(H handle) { std::forward<H>(handle).object(); };
template <class H>
concept lends_items = requires(H handle) { std::forward<H>(handle).items(); };
template <class H>
concept lends_pointer = requires(H handle) { std::forward<H>(handle).operator->(); };
template <class H>
concept lends_native_data = requires(H handle) { native_cast<Actor>(std::forward<H>(handle)); };

static_assert(lends_object<const Type&> && !lends_object<Type> && !lends_object<const Type>);
static_assert(lends_object<Class_Generic> && lends_object<Class<Integer>>, "classes do not live by their handles");
static_assert(lends_items<const Tuple_Generic&> && !lends_items<Tuple_Generic> && !lends_items<Variadic>);
static_assert(lends_pointer<const Result<String>&> && !lends_pointer<Result<String>> &&
              !lends_pointer<Union<Type, None>>);
static_assert(lends_native_data<const Any&> && !lends_native_data<Any> && !lends_native_data<List_Generic>);

TEST(Handle, OfATemporaryGivesItemsThatLiveOnTheirOwn) {
  int deaths = 0;
  {
    const Any& item = Tuple_Generic({make_mortal([&] { ++deaths; })}).at(0);
    EXPECT_EQ(deaths, 0) << text(item);
  }
  EXPECT_EQ(deaths, 1);
}

}  // namespace
}  // namespace ling
