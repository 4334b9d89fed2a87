// runs: tour.js
// arguments: cipher|number|rsa|streams
