// runs: tour.js
// arguments: hash|codepage|hmac|errors
