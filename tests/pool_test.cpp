#include "core/pool.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <set>
#include <utility>
#include <vector>

namespace {

using Thing = std::array<std::size_t, 3>;

// In phases that fill it beyond several blocks, leave a part and empty it, in any order.
TEST(PoolTest, KeepsThingsApartAndUsesTheirPlacesAgain) {
    std::mt19937 random(20260804);
    tav::Pool<Thing> pool;
    std::vector<Thing*> taken;
    std::vector<Thing*> first;
    std::size_t number = 0;
    for (const std::size_t wanted : {1000U, 300U, 700U, 0U, 1000U, 1U, 0U, 1U}) {
        for (; taken.size() < wanted; ++number) {
            taken.push_back(pool.make());
            taken.back()->fill(number);
        }
        for (; taken.size() > wanted; taken.pop_back()) {
            std::swap(taken[random() % taken.size()], taken.back());
            pool.destroy(taken.back());
        }
        first = first.empty() ? taken : first;
        EXPECT_TRUE(wanted != first.size() || taken == first) << "it was empty, and begins anew";
        std::set<std::size_t> numbers;
        for (const Thing* thing : taken) {
            EXPECT_EQ(*thing, Thing({(*thing)[0], (*thing)[0], (*thing)[0]}));
            EXPECT_TRUE(numbers.insert((*thing)[0]).second) << "two things have one place";
        }
    }
    pool.freeUnused();
    EXPECT_EQ(taken.front()->back(), number - 1) << "what is in use was freed";
    pool.destroy(taken.front());
}

}  // namespace
