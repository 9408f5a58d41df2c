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
concept lends_parameters = requires(H handle) { std::forward<H>(handle).parameters(); };
template <class H>
concept lends_default = requires(H handle) { std::forward<H>(handle).defaultOf(0); };
template <class H>
concept lends_value = requires(H handle) { std::forward<H>(handle).constantValue(); };
template <class H>
concept lends_parts = requires(H handle) { std::forward<H>(handle).parts(); };
template <class H>
concept lends_pointer = requires(H handle) { std::forward<H>(handle).operator->(); };
template <class H>
concept lends_native_data = requires(H handle) { native_cast<Actor>(std::forward<H>(handle)); };

static_assert(lends_object<const Type&> && !lends_object<Type> && !lends_object<const Type>);
static_assert(!lends_object<List_Generic> && !lends_object<I_Callable_Generic> && !lends_object<String>);
static_assert(lends_object<Class_Generic> && lends_object<Class<Integer>>, "classes do not live by their handles");
static_assert(lends_items<const Tuple_Generic&> && !lends_items<Tuple_Generic> && !lends_items<Variadic>);
static_assert(lends_items<const item_row&> && !lends_items<item_row>);
static_assert(lends_parameters<const Signature&> && !lends_parameters<Signature>);
static_assert(lends_default<const Signature&> && !lends_default<Signature>);
static_assert(lends_value<const Property&> && !lends_value<Property>);
static_assert(lends_parts<const Decimal&> && !lends_parts<Decimal>);
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

TEST(Handle, UnwrapsAndCoercesUnderTheirPublicNames) {
  const Any lazy = make_computed<Any>([] { return Any(2.0); });
  expect_outcomes({
      {unwrap(lazy), "2.0"},
      {coerce(lazy, Integer::getClass()), "2"},
      {coerce("2", Integer::getClass()), "Error: Unable to convert '2' to Integer."},
  });
  EXPECT_EQ(static_cast<Any (*)(const Any&)>(&unwrap), static_cast<Any (*)(const Any&)>(&internal::unwrap));
}

}  // namespace
}  // namespace ling
