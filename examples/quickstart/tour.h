/* One tour function per subsystem; each prints its section and returns 0, or
 * non-zero when something failed. */
#ifndef OXA_QUICKSTART_TOUR_H
#define OXA_QUICKSTART_TOUR_H

int tour_service(void);
int tour_streams(void);
int tour_distributions(void);
int tour_summary_stats(void);
int tour_data_fitting(void);
int tour_vector_math(void);

#endif
