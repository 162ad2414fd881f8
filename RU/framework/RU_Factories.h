#pragma once

#include <RU/framework/RU_Algorithm.h>

#include <new>

/// The ten factories of a family, written once: an algorithm derives from RU_FilterFactories<MyOp> and has
/// them all, each making a MyOp<T, FullRange>(this). They stack for algorithms of several families:
///
///     class Mine : public RU_PixelFactories<MyPixelOp, RU_FilterFactories<MyFilterOp>>
///
/// An exported class keeps its operation out of its header: there it declares the template and says
/// `extern template class RU_API RU_FilterFactories<MyOp>;`, in its source it defines and instantiates it.
#define RU_FACTORY_DECLARE(CODE, T, WHITE, NAME, FAMILY)                                                     \
    RU_##FAMILY##Op<T, true>* allocate##FAMILY(T) override;                                                  \
    RU_##FAMILY##Op<T, false>* allocate##FAMILY(T, int) override;

#define RU_FACTORY_DEFINE(CODE, T, WHITE, NAME, FAMILY)                                                      \
    template <template <class, bool> class Op, class Base>                                                   \
    RU_##FAMILY##Op<T, true>* RU_##FAMILY##Factories<Op, Base>::allocate##FAMILY(T)                          \
    {                                                                                                        \
        return new (std::nothrow) Op<T, true>(this);                                                         \
    }                                                                                                        \
    template <template <class, bool> class Op, class Base>                                                   \
    RU_##FAMILY##Op<T, false>* RU_##FAMILY##Factories<Op, Base>::allocate##FAMILY(T, int)                    \
    {                                                                                                        \
        return new (std::nothrow) Op<T, false>(this);                                                        \
    }

#define RU_FACTORIES(FAMILY)                                                                                 \
    template <template <class, bool> class Op, class Base = RU_Algorithm>                                    \
    class RU_##FAMILY##Factories : public Base                                                               \
    {                                                                                                        \
    public:                                                                                                  \
        PXL_FOR_EACH_FORMAT(RU_FACTORY_DECLARE, FAMILY)                                                      \
    };                                                                                                       \
    PXL_FOR_EACH_FORMAT(RU_FACTORY_DEFINE, FAMILY)

RU_FACTORIES(Generator)
RU_FACTORIES(Pixel)
RU_FACTORIES(Filter)
RU_FACTORIES(Binary)

#undef RU_FACTORIES
#undef RU_FACTORY_DEFINE
#undef RU_FACTORY_DECLARE
