units / inches
fedrat/10,ipm
goto / 1. , -2e0 ,.5
