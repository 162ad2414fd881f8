#include <RU/shape/RU_FeatherDropoff.h>

#include <RU/kernel/ru_Trigonometry.h>

#include <numbers>

float RUfeatherDropoff(RU_FeatherDropoff kind, float x)
{
    constexpr float norm = 1.0523f;
    const float above = x > 0.0f ? x : 0.0f;
    const float t = above < 1.0f ? above : 1.0f;
    switch (kind) {
    case RU_DROPOFF_GAUSSIAN:
        return norm * (1.0f - ru_exp(-3.0f * t * t));
    case RU_DROPOFF_EASE_OUT:
        return norm * (1.0f - ru_exp(-3.0f * t));
    case RU_DROPOFF_EASE_IN:
        return (ru_exp(-3.0f * (1.0f - t)) - 1.0f) * norm + 1.0f;
    case RU_DROPOFF_SMOOTH: {
        const float sine = ru_sin(std::numbers::pi_v<float> / 2.0f * t);
        return sine * sine;
    }
    case RU_DROPOFF_LINEAR:
        break;
    }
    return t;
}
