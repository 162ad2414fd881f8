#include <RU/pixelfunc/ru_GuardedShader.h>

#include <string>

UT_String ru_guardedShader(const char* test, const char* call, bool useReplacement)
{
    UT_String text("value = VEC4(\n");
    for (const char* component : {"value.r", "value.g", "value.b", "value.a"}) {
        text.append("    (abs(").append(component).append(")").append(test).append(") ? ");
        text.append(call).append("(").append(component).append(") : ");
        text.append(useReplacement ? "replacement" : component);
        text.append(component[6] == 'a' ? ");\n" : ",\n");
    }
    return text;
}
