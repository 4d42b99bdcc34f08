/* Opens the first amplifier, prints five sets of measured values and closes it. */
#include <stdio.h>
#include <time.h>

#include "TORVIK.h"

int main(void) {
    uint32_t channels, code;
    int32_t count, sets = 0;
    double values[8];
    char text[128];
    if (TORVIKactivateStd(1, &channels) != 0) {
        TORVIKgetLastErrorText(1, text, &code);
        fprintf(stderr, "no amplifier: %s\n", text);
        return 1;
    }
    for (time_t end = time(NULL) + 5; sets < 5 && time(NULL) < end;) {
        if (TORVIKreadMultiple(1, 0, values, (int32_t)channels, &count, NULL) != 1 || count == 0) continue;
        for (uint32_t channel = 0; channel < channels; ++channel)
            printf("%10.6f", values[channel]);
        printf("   set %d\n", ++sets);
    }
    TORVIKrelease(0);
    return sets == 5 ? 0 : 1;
}
